#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/JpegWalk.h"
#include "tests/support/CaptureBytes.h"
#include "tests/unit/media/WalkTest.h"

namespace {

using captures::ExifEntry;
using captures::FrameHeader;
using captures::ValuesAt;
using samples::U16;

const std::string kFrame = FrameHeader(1080, 1920);

WalkOutcome Walk(const std::string& bytes) {
    return RunWalk(media::WalkJpeg, bytes);
}

WalkOutcome WalkTags(const std::vector<ExifEntry>& entries, const std::string& values) {
    return Walk(captures::Jpeg(entries, values, kFrame));
}

TEST(JpegWalk, MakeAndModelNeedTheirCountsAndTheMakeOutranksTheModel) {
    struct {
        std::vector<ExifEntry> entries;
        const char* values;
        bool isOwn;
    } const cases[] = {
        {{{0x010F, 7, ValuesAt(1)}}, "ZORVEX", true},
        {{{0x010F, 9, ValuesAt(1)}}, "ZvCamera", true},
        {{{0x010F, 6, ValuesAt(1)}}, "ZORVEX", false},
        {{{0x0110, 6, ValuesAt(1)}}, "Lumis", true},
        {{{0x010F, 3, 0}, {0x0110, 6, ValuesAt(2)}}, "Lumis", false},
        {{{0x0110, 6, ValuesAt(2)}, {0x010F, 3, 0}}, "Lumis", true},
        {{{0x010F, 7, ValuesAt(2)}, {0x010F, 7, 0}}, "ZORVEX", false},
        {{{0x010F, 7, ValuesAt(2)}, {0x010F, 5, 0}}, "ZORVEX", true},
        {{{0x0131, 18, ValuesAt(1)}}, "Ovirastream SHARE", true},
        {{{0x0131, 22, ValuesAt(1)}}, "Ovirastream SHARE 1.0", false},
        {{{0x0131, 5, 0}, {0x0131, 18, ValuesAt(2)}}, "Ovirastream SHARE", false},
    };
    for (const auto& row : cases)
        EXPECT_EQ(WalkTags(row.entries, row.values).isOwn, row.isOwn) << &row - cases;
}

TEST(JpegWalk, NamesAreTakenOnceAndKeptWithinTheBlock) {
    const WalkOutcome named = WalkTags({{0x000B, 3, ValuesAt(4)},
                                        {0x000B, 3, ValuesAt(4) + 3},
                                        {0xC6F6, 2, ValuesAt(4) + 3},
                                        {0xC6F6, 1, 0}},
                                       "OneTwo");
    EXPECT_EQ(named.drsName, "One");
    EXPECT_EQ(named.drsProfileName, "Tw");
    const WalkOutcome cut = WalkTags({{0x000B, 512, 472}, {0xC6F6, 512, 482}}, "");
    EXPECT_EQ(cut.drsName, std::string(10, '\0'));
    EXPECT_EQ(cut.drsProfileName, "");
    const WalkOutcome tooLong = WalkTags({{0x000B, 513, 0}, {0x000B, 3, ValuesAt(2)}}, "One");
    EXPECT_EQ(tooLong.drsName, "");
    ASSERT_EQ(tooLong.findings.size(), 1u);
    EXPECT_STREQ(tooLong.findings[0], "CheckIfZv: DRSName is way too big!");
    const WalkOutcome far = WalkTags({{0x000B, 512, 0xFFFFFFFF}, {0x010F, 7, 0xFFFFFFE2}}, "");
    EXPECT_EQ(far.drsName, "");
    EXPECT_FALSE(far.isOwn);
}

TEST(JpegWalk, SubtypeIsTheFirstTextBehindTheTiffHeader) {
    EXPECT_EQ(WalkTags({{0x010F, 7, ValuesAt(1)}}, "ZORVEX..Stereo360Mono").fileSubType, "Stereo");
    std::string early = captures::OwnJpeg(1, 1);
    early.replace(24, 6, "Stereo");  // the segment's own header, before the TIFF data
    EXPECT_EQ(Walk(early).fileSubType, "Unknown");
    std::string late = captures::OwnJpeg(1, 1);
    late.replace(496, 16, "SuperResolution.");
    EXPECT_EQ(Walk(late).fileSubType, "SuperResolution");
    late.replace(496, 16, "\0SuperResolution", 16);
    EXPECT_EQ(Walk(late).fileSubType, "Unknown") << "the scan ends at 496";
}

TEST(JpegWalk, OnlyTheFirstBlockOfAJfifFileWithBigEndianDataCounts) {
    const std::string own = captures::OwnJpeg(1, 1);
    EXPECT_TRUE(Walk(own).isOwn);
    EXPECT_FALSE(Walk(own.substr(0, 511)).isOwn);
    EXPECT_FALSE(Walk("").isOwn);
    struct Patch {
        size_t at;
        std::string bytes;
    };
    for (const Patch& patch : {Patch{3, "\xE1"}, Patch{captures::kTiffBase, "II"}, Patch{4, U16(27)},
                               Patch{4, U16(492)}, Patch{4, U16(493)}, Patch{4, U16(0xFFFF)}}) {
        std::string patched = own;
        patched.replace(patch.at, patch.bytes.size(), patch.bytes);
        EXPECT_FALSE(Walk(patched).isOwn) << testing::PrintToString(patch.bytes);
    }
}

TEST(JpegWalk, OversizedPicturesAreOwnAndSaySo) {
    EXPECT_EQ(Walk(captures::OwnJpeg(8192, 8192)).fileSubType, "Unknown");
    const WalkOutcome large = Walk(captures::OwnJpeg(8192, 8193));
    EXPECT_TRUE(large.isOwn);
    EXPECT_EQ(large.fileSubType, "SuperResolution_Oversized");
    const std::string frameless = captures::Jpeg({{0x010F, 7, ValuesAt(1)}}, "ZORVEXStereo", "");
    EXPECT_EQ(Walk(frameless).fileSubType, "SuperResolution_Oversized");
}

bool SizeIsValid(const std::string& bytes) {
    media::MemorySource source(bytes);
    media::ByteCursor cursor(source);
    return media::JpegSizeIsValid(cursor);
}

TEST(JpegSize, FollowsTheMarkersToTheFrame) {
    struct Case {
        std::string between;
        bool valid;
    };
    for (const auto& [between, valid] :
         {Case{"\xFF\xFF\xFF", true}, Case{"\xFF\xC4" + U16(2) + "\xFF\xC8" + U16(3) + "x", true},
          Case{"\xFF\xE1" + U16(65535) + std::string(65533, '\xFF'), true},
          Case{FrameHeader(65535, 65535), false}, Case{"x", false}, Case{"\xFF\xE1" + U16(3) + "xx", false},
          Case{"\xFF\xE1" + U16(1), false}, Case{"\xFF\xD9", false}, Case{"\xFF\xDA" + U16(2), false}})
        EXPECT_EQ(SizeIsValid("\xFF\xD8" + between + kFrame), valid)
            << testing::PrintToString(between.substr(0, 20));
    EXPECT_FALSE(SizeIsValid(kFrame));
    for (size_t size = 0; size < kFrame.size() - 3; ++size)
        EXPECT_EQ(SizeIsValid("\xFF\xD8" + kFrame.substr(0, size)), size >= 10) << size;
}

}  // namespace
