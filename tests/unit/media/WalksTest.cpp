// The walks' words and the texts they dig out. How they go from place to place is compared with plain forms
// of them by the fuzz targets.
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

struct Outcome : media::SniffResult {
    int32_t code = 0;
};

Outcome Walk(int32_t (*walk)(media::ByteCursor&, media::SniffResult&), const std::string& bytes) {
    media::MemorySource source(bytes);
    media::ByteCursor cursor(source);
    Outcome outcome;
    outcome.code = walk(cursor, outcome);
    return outcome;
}

TEST(Walks, SayWhatIsWrongWithAnMp4) {
    const char* small = "Malformed MP4 file. Box size less than header overhead.";
    const char* smallExtended = "Malformed MP4 file. Box size less than header overhead with ext size.";
    const struct {
        std::string bytes;
        uint32_t code;
        const char* finding;
    } cases[] = {
        {U32(7) + "moov", 0x8007000D, small},
        {U32(0) + "mdat", 1, small},
        {U32(1) + "mdat" + U64(15), 1, smallExtended},
        {U32(1) + "mdat", 0x80004005, "Failed to read from MP4 file."},
        {Mp4Box("tagc", ""), 0x80004005, "Failed to read box data from MP4 file."},
    };
    for (const auto& [bytes, code, finding] : cases) {
        const Outcome outcome = Walk(media::WalkMp4, bytes);
        EXPECT_EQ(static_cast<uint32_t>(outcome.code), code);
        ASSERT_EQ(outcome.findings.size(), 1u);
        EXPECT_STREQ(outcome.findings[0], finding);
    }
}

TEST(Walks, TakeTheBlockOfAnOwnMp4Alone) {
    const std::string inner = R"({"DRSAppName":"A"})";
    const Outcome own = Walk(media::WalkMp4, captures::Movie(Block("Ovirastream SDK", inner) + '\0'));
    EXPECT_EQ(own.fileSource + own.fileSubType + own.drsName, "OVS_SDKHighlightA");
    const Outcome other = Walk(media::WalkMp4, captures::Movie(Block("Ovirastream LUMIS", inner)));
    EXPECT_EQ(other.fileSource + other.fileSubType + other.drsName, "");
}

TEST(Walks, SayWhichNameInAJpegIsTooLong) {
    for (const auto& [tag, finding] : {std::pair{0x000B, "CheckIfZv: DRSName is way too big!"},
                                       {0xC6F6, "CheckIfZv: DRSProfileName is way too big!"}}) {
        const Outcome outcome =
            Walk(media::WalkJpeg, captures::Jpeg({{static_cast<uint16_t>(tag), 513, 0}}, "", ""));
        ASSERT_EQ(outcome.findings.size(), 1u);
        EXPECT_STREQ(outcome.findings[0], finding);
    }
}

TEST(Walks, FindTheBlockInThePacketOfAPng) {
    const std::string block = Block("s", R"({"ShortName":"short","CmsId":5})");
    std::string quoted;
    for (const char c : block)
        quoted += c == '"' ? "&quot;" : std::string(1, c);
    const Outcome outcome =
        Walk(media::WalkPng, captures::Png(captures::PngXmp(captures::Xmp("Ovirastream LUMIS 1.1", quoted))));
    EXPECT_EQ(outcome.fileSource + outcome.fileSubType, "OVS_LumisNormal_Lumis");
    EXPECT_EQ(outcome.shortName, "short");
    EXPECT_EQ(outcome.cmsId, 5);
}

std::string Content(const std::string& text, const std::vector<const char*>& tags) {
    media::XMPMeta xmp(text);
    for (const char* tag : tags)
        EXPECT_EQ(xmp.Descend(tag), 0);
    std::string out = "left over";
    EXPECT_EQ(xmp.GetCurrentString(out), 0);
    return out;
}

TEST(XMPMeta, IsNoParserOfXml) {
    const struct {
        const char *text, *content;
    } cases[] = {
        {"<ns:a b=\"c\"> \n two words\n </a  > tail", "two words"},
        {"<a>closed by one</ns:a>", "closed by one</ns:a>"},
        {"<a>x<b>y</b>z<</a>", "x<b>y</b>z<</a>"},
        {"   <a> \n </a>", ""},
        {"<a", "<a"},
        {"<a>never closed <", "never closed <"},
        {"<b>no such element</b>", "<b>no such element</b>"},
        {"<a>&lt;&gt;&amp;&apos;&quot;&#xA;&amp;lt;&nbsp;&LT;&am</a>p;", "<>&'\"\n&lt;&nbsp;&LT;&am"},
    };
    for (const auto& [text, content] : cases)
        EXPECT_EQ(Content(text, {"a"}), content);
    EXPECT_EQ(Content("<r><a>in</a></r>", {"r", "missing", "a"}), "in");
}

}  // namespace
