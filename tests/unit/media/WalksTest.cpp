// The texts of the walks. How they go from place to place is compared with plain forms of them by the fuzz
// targets.
#include <memory>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/JpegWalk.h"
#include "plugin-modules/Gallery/src/media/Mp4Walk.h"
#include "plugin-modules/Gallery/src/media/PngWalk.h"
#include "plugin-modules/Gallery/src/media/XMPMeta.h"
#include "tests/support/CaptureBytes.h"

namespace {

using captures::Block;
using samples::Mp4Box;
using samples::U32;
using samples::U64;

media::SniffResult Walk(int32_t (*walk)(media::ByteCursor&, media::SniffResult&), const std::string& bytes) {
    media::MemorySource source(bytes);
    media::ByteCursor cursor(source);
    media::SniffResult result;
    walk(cursor, result);
    return result;
}

TEST(Walks, SayWhatIsWrongWithAFile) {
    const auto longName = [](uint16_t tag) { return captures::Jpeg({{tag, 513, 0}}, "", ""); };
    const struct {
        int32_t (*walk)(media::ByteCursor&, media::SniffResult&);
        std::string bytes;
        const char* finding;
    } cases[] = {
        {media::WalkMp4, U32(7) + "moov", "Malformed MP4 file. Box size less than header overhead."},
        {media::WalkMp4, U32(1) + "mdat" + U64(15),
         "Malformed MP4 file. Box size less than header overhead with ext size."},
        {media::WalkMp4, U32(1) + "mdat", "Failed to read from MP4 file."},
        {media::WalkMp4, Mp4Box("tagc", ""), "Failed to read box data from MP4 file."},
        {media::WalkJpeg, longName(0x000B), "CheckIfZv: DRSName is way too big!"},
        {media::WalkJpeg, longName(0xC6F6), "CheckIfZv: DRSProfileName is way too big!"},
    };
    for (const auto& [walk, bytes, finding] : cases) {
        const media::SniffResult result = Walk(walk, bytes);
        ASSERT_EQ(result.findings.size(), 1u) << finding;
        EXPECT_STREQ(result.findings[0], finding);
    }
}

TEST(Walks, FindTheBlockInThePacketOfAPng) {
    const std::string block = Block("s", R"({"ShortName":"short","CmsId":5})");
    std::string quoted;
    for (const char c : block)
        quoted += c == '"' ? "&quot;" : std::string(1, c);
    const media::SniffResult outcome =
        Walk(media::WalkPng, captures::Png(captures::PngXmp(captures::Xmp("Ovirastream LUMIS 1.1", quoted))));
    EXPECT_EQ(outcome.fileSource + outcome.fileSubType, "OVS_LumisNormal_Lumis");
    EXPECT_EQ(outcome.shortName, "short");
    EXPECT_EQ(outcome.cmsId, 5);
}

TEST(XMPMeta, IsNoParserOfXml) {
    const auto content = [](const std::string& text, const std::vector<const char*>& tags) {
        media::XMPMeta xmp(text);
        for (const char* tag : tags)
            EXPECT_EQ(xmp.Descend(tag), 0);
        std::string out = "left over";
        EXPECT_EQ(xmp.GetCurrentString(out), 0);
        return out;
    };
    const struct {
        const char *text, *content;
    } cases[] = {
        {"<ns:a b=\"c\"> \n two words\n </a  > tail", "two words"},
        {"<a>closed by one</ns:a>", "closed by one</ns:a>"},
        {"<a>x<b>y</b>z<</a>", "x<b>y</b>z<</a>"},
        {"   <a> \n </a>", ""},
        {"<a>never closed <", "never closed <"},
        {"<a>&lt;&gt;&amp;&apos;&quot;&#xA;&amp;lt;&nbsp;&LT;&am</a>p;", "<>&'\"\n&lt;&nbsp;&LT;&am"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(content(text, {"a"}), expected);
    EXPECT_EQ(content("<r><a>in</a></r>", {"r", "missing", "a"}), "in");
}

}  // namespace
