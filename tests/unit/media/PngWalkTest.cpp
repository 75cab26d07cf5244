#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/PngWalk.h"
#include "tests/support/CaptureBytes.h"
#include "tests/unit/media/WalkTest.h"

namespace {

using captures::Block;
using captures::PngText;
using samples::PngChunk;
using samples::U32;

WalkOutcome WalkBytes(const std::string& bytes) {
    WalkOutcome outcome = RunWalk(media::WalkPng, bytes);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_TRUE(outcome.findings.empty());
    return outcome;
}

WalkOutcome Walk(const std::string& chunks) {
    return WalkBytes(captures::Png(chunks));
}

void ExpectKind(const WalkOutcome& outcome, bool isOwn, const char* subType, const char* source) {
    EXPECT_EQ(outcome.isOwn, isOwn);
    EXPECT_EQ(outcome.fileSubType, subType);
    EXPECT_EQ(outcome.fileSource, source);
}

TEST(PngWalk, SoftwareByPrefixAndTheFirstSourceOfThirteenBytesTellTheKind) {
    const std::string sdk = PngText("Software", "Ovirastream SDK");
    const std::string maker = PngText("Source", "ZORVEX");
    struct {
        std::string chunks;
        bool isOwn;
        const char *subType, *source;
    } const cases[] = {
        {PngText("Software", "Ovirastream SHARE 3.2"), true, "Normal", "OVS_Share"},
        {PngText("Software", "Ovirastream SHAR"), false, "Unknown", "Undefined"},
        {PngText("Software", "ovirastream SDK"), false, "Unknown", "Undefined"},
        {PngText("Source", "ZORVEX2") + maker, true, "StandAlone_Lumis", "Undefined"},
        {PngText("Source", "OTHERS") + maker, false, "Unknown", "Undefined"},
        {PngText("Source", "OTHERS") + sdk, true, "Highlight", "OVS_SDK"},
        {sdk + maker, true, "Highlight", "OVS_SDK"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        ExpectKind(Walk(row.chunks), row.isOwn, row.subType, row.source);
    }
}

TEST(PngWalk, ShortTextChunksAreHarmless) {
    for (const char* data : {"", "Source", "Softwar", "Software", "Description", "Description{"})
        ExpectKind(Walk(PngChunk("tEXt", data) + PngChunk("iTXt", data)), false, "Unknown", "Undefined");
}

TEST(PngWalk, DescriptionAndXmpCarryTheBlock) {
    EXPECT_EQ(Walk(PngText("Description", Block("s", R"({"DRSAppName":"A"})"))).drsName, "A");
    const std::string block = Block("s", R"({"ShortName":"short","CmsId":5})");
    std::string quoted;
    for (const char c : block)
        quoted += c == '"' ? "&quot;" : std::string(1, c);
    const WalkOutcome outcome = Walk(captures::PngXmp(captures::Xmp("Ovirastream LUMIS 1.1", quoted)));
    ExpectKind(outcome, true, "Normal_Lumis", "OVS_Lumis");
    EXPECT_EQ(outcome.shortName, "short");
    EXPECT_EQ(outcome.cmsId, 5);
}

TEST(PngWalk, XmpHeaderMayEndAnywhere) {
    const std::string keyword("XML:com.adobe.xmp\0\0\0", 20);
    for (const std::string& data : {keyword.substr(0, 16), keyword, keyword + std::string("en\0", 3),
                                    keyword + "en" + captures::Xmp("Ovirastream SDK", "")})
        EXPECT_FALSE(Walk(PngChunk("iTXt", data)).isOwn);
    const std::string whole = keyword + std::string("\0\0", 2) + captures::Xmp("Ovirastream SDK", "");
    EXPECT_TRUE(Walk(PngChunk("iTXt", whole)).isOwn);
}

TEST(PngWalk, LooksAtSevenChunksBeforeThePixels) {
    const std::string own = PngText("Software", "Ovirastream SDK");
    const std::string filler = PngChunk("gAMA", "1234");
    const std::string five = filler + filler + filler + filler + filler;
    EXPECT_TRUE(Walk(five + own).isOwn);
    EXPECT_FALSE(Walk(five + filler + own).isOwn);
    EXPECT_FALSE(Walk(PngChunk("IDAT", "") + own).isOwn);
}

TEST(PngWalk, LargeChunksAreSkippedWhole) {
    const std::string own = PngText("Software", "Ovirastream SDK");
    std::string text("Software\0Ovirastream SHARE", 26);
    text.resize(4096);
    ExpectKind(Walk(PngChunk("tEXt", text)), true, "Normal", "OVS_Share");
    text.resize(4097);
    ExpectKind(Walk(PngChunk("tEXt", text) + own), true, "Highlight", "OVS_SDK");
    // Length and CRC would wrap at 32 bits, right onto the chunk behind.
    ExpectKind(Walk(U32(0xFFFFFFFC) + "fake" + own), false, "Unknown", "Undefined");
}

TEST(PngWalk, KeepsWhatItHasWhenTheFileEnds) {
    const std::string whole =
        captures::Png(PngText("Software", "Ovirastream SDK") + PngText("DRSName", "Name of it"));
    const size_t firstText = 8 + 25;
    for (size_t size = 0; size <= whole.size(); ++size) {
        const WalkOutcome outcome = WalkBytes(whole.substr(0, size));
        EXPECT_EQ(outcome.isOwn, size >= firstText + 8 + 24) << size;
        EXPECT_EQ(outcome.drsName, size >= firstText + 36 + 8 + 18 ? "Name of it" : "") << size;
    }
    EXPECT_FALSE(WalkBytes("P" + whole.substr(1)).isOwn);
}

}  // namespace
