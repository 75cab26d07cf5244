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

TEST(PngWalk, SoftwareTellsSourceAndSubtypeByPrefix) {
    ExpectKind(Walk(PngText("Software", "Ovirastream SHARE 3.2")), true, "Normal", "OVS_Share");
    ExpectKind(Walk(PngText("Software", "Ovirastream SDK")), true, "Highlight", "OVS_SDK");
    ExpectKind(Walk(PngText("Software", "Ovirastream LUMIS")), true, "Normal_Lumis", "OVS_Lumis");
    ExpectKind(Walk(PngText("Software", "Ovirastream SHAR")), false, "Unknown", "Undefined");
    ExpectKind(Walk(PngText("Software", "ovirastream SDK")), false, "Unknown", "Undefined");
}

TEST(PngWalk, FirstSourceChunkOfExactlyThirteenBytesSettles) {
    ExpectKind(Walk(PngText("Source", "ZORVEX")), true, "StandAlone_Lumis", "Undefined");
    ExpectKind(Walk(PngText("Source", "ZORVEX2")), false, "Unknown", "Undefined");
    ExpectKind(Walk(PngText("Source", "ZORVEX2") + PngText("Source", "ZORVEX")), true, "StandAlone_Lumis",
               "Undefined");
    ExpectKind(Walk(PngText("Source", "OTHERS") + PngText("Source", "ZORVEX")), false, "Unknown",
               "Undefined");
    ExpectKind(Walk(PngText("Source", "OTHERS") + PngText("Software", "Ovirastream SDK")), true, "Highlight",
               "OVS_SDK");
    ExpectKind(Walk(PngText("Software", "Ovirastream SDK") + PngText("Source", "ZORVEX")), true, "Highlight",
               "OVS_SDK");
}

TEST(PngWalk, NamesAreTheBytesBehindTheKeyword) {
    const WalkOutcome named = Walk(PngText("DRSName", "N\xFF\xFE") + PngText("DRSProfileName", "P"));
    EXPECT_EQ(named.drsName, "N\xFF\xFE");
    EXPECT_EQ(named.drsProfileName, "P");
    // The value begins behind the end of the chunk.
    const WalkOutcome bare = Walk(PngText("DRSName", "N") + PngChunk("tEXt", "DRSName") +
                                  PngText("DRSProfileName", "P") + PngChunk("tEXt", "DRSProfileName"));
    EXPECT_EQ(bare.drsName, "");
    EXPECT_EQ(bare.drsProfileName, "");
}

TEST(PngWalk, ShortTextChunksAreHarmless) {
    for (const char* data : {"", "S", "Source", "Softwar", "Software", "Software\0", "DRSNam", "Descriptio",
                             "Description", "Description{"})
        ExpectKind(Walk(PngChunk("tEXt", data) + PngChunk("iTXt", data)), false, "Unknown", "Undefined");
}

TEST(PngWalk, DescriptionCarriesTheBlock) {
    const WalkOutcome outcome =
        Walk(PngText("Description", Block("s", R"({"DRSAppName":"A","MediaType":"360"})")) +
             PngText("Software", "Ovirastream SHARE"));
    EXPECT_EQ(outcome.drsName, "A");
    ExpectKind(outcome, true, "Normal", "OVS_Share");
}

TEST(PngWalk, XmpTellsTheToolAndCarriesTheBlock) {
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
    for (const std::string& data : {keyword.substr(0, 16), keyword.substr(0, 17), keyword, keyword + "en",
                                    keyword + std::string("en\0", 3), keyword + std::string("en\0x", 4),
                                    keyword + "en" + captures::Xmp("Ovirastream SDK", "")})
        ExpectKind(Walk(PngChunk("iTXt", data)), false, "Unknown", "Undefined");
    ExpectKind(
        Walk(PngChunk("iTXt", keyword + std::string("\0\0", 2) + captures::Xmp("Ovirastream SDK", ""))), true,
        "Highlight", "OVS_SDK");
}

TEST(PngWalk, LooksAtSevenChunksBeforeThePixels) {
    const std::string own = PngText("Software", "Ovirastream SDK");
    std::string fillers;
    for (int i = 0; i < 5; ++i)
        fillers += PngChunk("gAMA", "1234");
    EXPECT_TRUE(Walk(fillers + own).isOwn);
    EXPECT_FALSE(Walk(fillers + PngChunk("gAMA", "1234") + own).isOwn);
    EXPECT_FALSE(Walk(PngChunk("IDAT", "") + own).isOwn);
}

TEST(PngWalk, LargeChunksAreSkippedWhole) {
    const std::string own = PngText("Software", "Ovirastream SDK");
    std::string text = "Software";
    text += '\0';
    text += "Ovirastream SHARE";
    text.resize(4096);
    ExpectKind(Walk(PngChunk("tEXt", text)), true, "Normal", "OVS_Share");
    text.resize(4097);
    ExpectKind(Walk(PngChunk("tEXt", text)), false, "Unknown", "Undefined");
    ExpectKind(Walk(PngChunk("tEXt", text) + own), true, "Highlight", "OVS_SDK");
    ExpectKind(Walk(PngChunk("zTXt", std::string(100000, 'x')) + own), true, "Highlight", "OVS_SDK");
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
    std::string damaged = whole;
    damaged[0] = 'P';
    EXPECT_FALSE(WalkBytes(damaged).isOwn);
}

}  // namespace
