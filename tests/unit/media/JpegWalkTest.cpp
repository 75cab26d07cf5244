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
    WalkOutcome outcome = RunWalk(media::WalkJpeg, bytes);
    EXPECT_EQ(outcome.code, 1);
    return outcome;
}

WalkOutcome WalkTags(const std::vector<ExifEntry>& entries, const std::string& values) {
    return Walk(captures::Jpeg(entries, values, kFrame));
}

bool IsOwn(const std::vector<ExifEntry>& entries, const std::string& values) {
    return WalkTags(entries, values).isOwn;
}

TEST(JpegWalk, MakeAndModelNeedTheirCounts) {
    EXPECT_TRUE(IsOwn({{0x010F, 7, ValuesAt(1)}}, "ZORVEX"));
    EXPECT_TRUE(IsOwn({{0x010F, 9, ValuesAt(1)}}, "ZvCamera"));
    EXPECT_FALSE(IsOwn({{0x010F, 6, ValuesAt(1)}}, "ZORVEX"));
    EXPECT_FALSE(IsOwn({{0x010F, 9, ValuesAt(1)}}, "ZORVEX"));
    EXPECT_TRUE(IsOwn({{0x0110, 6, ValuesAt(1)}}, "Lumis"));
    EXPECT_TRUE(IsOwn({{0x0110, 9, ValuesAt(1)}}, "ZvCamera"));
    EXPECT_FALSE(IsOwn({{0x0110, 7, ValuesAt(1)}}, "ZORVEX"));
}

TEST(JpegWalk, MakeOutranksALaterModelAndALaterMakeCounts) {
    EXPECT_FALSE(IsOwn({{0x010F, 3, 0}, {0x0110, 6, ValuesAt(2)}}, "Lumis"));
    EXPECT_TRUE(IsOwn({{0x0110, 6, ValuesAt(2)}, {0x010F, 3, 0}}, "Lumis"));
    EXPECT_FALSE(IsOwn({{0x010F, 7, ValuesAt(2)}, {0x010F, 7, 0}}, "ZORVEX"));
    EXPECT_TRUE(IsOwn({{0x010F, 7, ValuesAt(2)}, {0x010F, 5, 0}}, "ZORVEX")) << "another count leaves it";
}

TEST(JpegWalk, SoftwareMatchesWholeAndLeavesTheSubtype) {
    const WalkOutcome share = WalkTags({{0x0131, 18, ValuesAt(1)}}, "Ovirastream SHARE");
    EXPECT_TRUE(share.isOwn);
    EXPECT_EQ(share.fileSource, "OVS_Share");
    EXPECT_EQ(share.fileSubType, "Unknown");
    EXPECT_FALSE(IsOwn({{0x0131, 22, ValuesAt(1)}}, "Ovirastream SHARE 1.0"));
    EXPECT_FALSE(IsOwn({{0x0131, 5, 0}, {0x0131, 18, ValuesAt(2)}}, "Ovirastream SHARE")) << "first one only";
}

TEST(JpegWalk, NamesAreTakenOnceAndKeptWithinTheBlock) {
    const WalkOutcome named = WalkTags({{0x000B, 3, ValuesAt(4)},
                                        {0x000B, 3, ValuesAt(4) + 3},
                                        {0xC6F6, 2, ValuesAt(4) + 3},
                                        {0xC6F6, 1, 0}},
                                       "OneTwo");
    EXPECT_EQ(named.drsName, "One");
    EXPECT_EQ(named.drsProfileName, "Tw");
    EXPECT_TRUE(named.findings.empty());
    EXPECT_FALSE(named.isOwn);

    const WalkOutcome cut = WalkTags({{0x000B, 512, 472}, {0xC6F6, 512, 482}}, "");
    EXPECT_EQ(cut.drsName, std::string(10, '\0'));
    EXPECT_EQ(cut.drsProfileName, "");
    const WalkOutcome far = WalkTags({{0x000B, 512, 0xFFFFFFFF}, {0x010F, 7, 0xFFFFFFE2}}, "");
    EXPECT_EQ(far.drsName, "");
    EXPECT_FALSE(far.isOwn);
}

TEST(JpegWalk, TooLongNamesAreToldAndNotTaken) {
    const WalkOutcome outcome =
        WalkTags({{0x000B, 513, 0}, {0xC6F6, 0xFFFFFFFF, 0}, {0x000B, 3, ValuesAt(3)}}, "One");
    EXPECT_EQ(outcome.drsName + outcome.drsProfileName, "");
    ASSERT_EQ(outcome.findings.size(), 2u);
    EXPECT_STREQ(outcome.findings[0], "CheckIfZv: DRSName is way too big!");
    EXPECT_STREQ(outcome.findings[1], "CheckIfZv: DRSProfileName is way too big!");
}

TEST(JpegWalk, SubtypeIsTheFirstTextBehindTheTiffHeader) {
    EXPECT_EQ(WalkTags({{0x010F, 7, ValuesAt(1)}}, "ZORVEX360Stereo").fileSubType, "360Stereo");
    EXPECT_EQ(WalkTags({{0x010F, 7, ValuesAt(1)}}, "ZORVEX..Stereo360Mono").fileSubType, "Stereo");
    EXPECT_EQ(WalkTags({{0x010F, 7, ValuesAt(1)}}, "ZORVEXSuperResolution").fileSubType, "SuperResolution");
    std::string early = captures::OwnJpeg(1, 1);
    early.replace(24, 6, "Stereo");  // the segment's own header, before the TIFF data
    EXPECT_EQ(Walk(early).fileSubType, "Unknown");
    std::string late = captures::OwnJpeg(1, 1);
    late.replace(496, 16, "SuperResolution.");
    EXPECT_EQ(Walk(late).fileSubType, "SuperResolution");
    late.replace(496, 16, "\0SuperResolution", 16);
    EXPECT_EQ(Walk(late).fileSubType, "Unknown") << "the scan ends at 496";
}

TEST(JpegWalk, ScanStopsOnceAllIsKnown) {
    const std::string values = std::string("ZORVEX") + "Ovirastream SDK" + "Stereo" + std::string(20, '.');
    std::string bytes =
        captures::Jpeg({{0x010F, 7, ValuesAt(2)}, {0x0131, 16, ValuesAt(2) + 6}}, values, kFrame);
    bytes.replace(400, 12, std::string("\x01\x0F\0\x02\0\0\0\x07\0\0\0\0", 12));
    EXPECT_TRUE(Walk(bytes).isOwn);
    bytes.replace(400, 12, std::string(12, '\0'));
    EXPECT_EQ(Walk(bytes).fileSource, "OVS_SDK");
}

TEST(JpegWalk, OnlyTheFirstBlockOfAJfifFileWithBigEndianDataCounts) {
    const std::string own = captures::OwnJpeg(1, 1);
    EXPECT_TRUE(Walk(own).isOwn);
    EXPECT_FALSE(Walk(own.substr(0, 511)).isOwn);
    EXPECT_FALSE(Walk("").isOwn);
    std::string other = own;
    other[3] = '\xE1';
    EXPECT_FALSE(Walk(other).isOwn);
    std::string little = own;
    little.replace(captures::kTiffBase, 2, "II");
    EXPECT_FALSE(Walk(little).isOwn);
    for (const uint16_t length : {uint16_t{27}, uint16_t{492}, uint16_t{493}, uint16_t{0xFFFF}}) {
        std::string moved = own;
        moved.replace(4, 2, U16(length));
        EXPECT_FALSE(Walk(moved).isOwn) << length;
    }
}

TEST(JpegWalk, OversizedPicturesAreOwnAndSaySo) {
    EXPECT_EQ(Walk(captures::OwnJpeg(8192, 8192)).fileSubType, "Unknown");
    const WalkOutcome large = Walk(captures::OwnJpeg(8192, 8193));
    EXPECT_TRUE(large.isOwn);
    EXPECT_EQ(large.fileSubType, "SuperResolution_Oversized");
    const WalkOutcome frameless = Walk(captures::Jpeg({{0x010F, 7, ValuesAt(1)}}, "ZORVEXStereo", ""));
    EXPECT_TRUE(frameless.isOwn);
    EXPECT_EQ(frameless.fileSubType, "SuperResolution_Oversized");
}

// Tells how far it was read.
class CountingSource final : public media::ByteSource {
  public:
    explicit CountingSource(uint64_t size, std::string start) : size_(size), start_(std::move(start)) {}

    size_t ReadAt(uint64_t position, char* out, size_t count) override {
        if (position >= size_) return 0;
        count = static_cast<size_t>(std::min<uint64_t>(count, size_ - position));
        std::fill_n(out, count, '\0');
        if (position < start_.size()) start_.copy(out, count, static_cast<size_t>(position));
        ++reads;
        return count;
    }

    int reads = 0;

  private:
    uint64_t size_;
    std::string start_;
};

bool SizeIsValid(const std::string& bytes) {
    media::MemorySource source(bytes);
    media::ByteCursor cursor(source);
    return media::JpegSizeIsValid(cursor);
}

TEST(JpegSize, FollowsTheMarkersToTheFrame) {
    const std::string start = "\xFF\xD8";
    EXPECT_TRUE(SizeIsValid(start + kFrame));
    EXPECT_TRUE(SizeIsValid(start + "\xFF\xFF\xFF" + kFrame)) << "fill bytes";
    EXPECT_TRUE(
        SizeIsValid(start + "\xFF\xC4" + U16(2) + "\xFF\xC8" + U16(3) + "x" + "\xFF\xCC" + U16(2) + kFrame));
    EXPECT_TRUE(SizeIsValid(start + "\xFF\xE1" + U16(65535) + std::string(65533, '\xFF') + kFrame));
    EXPECT_TRUE(SizeIsValid(start + FrameHeader(0, 0)));
    EXPECT_FALSE(SizeIsValid(start + FrameHeader(65535, 65535)));
    std::string chain = start;
    for (int i = 0; i < 100000; ++i)
        chain += "\xFF\xE1" + U16(2);
    EXPECT_TRUE(SizeIsValid(chain + kFrame));
}

TEST(JpegSize, AnythingElseIsNotValid) {
    const std::string start = "\xFF\xD8";
    EXPECT_FALSE(SizeIsValid(""));
    EXPECT_FALSE(SizeIsValid(kFrame));
    EXPECT_FALSE(SizeIsValid(start + "x" + kFrame)) << "junk";
    EXPECT_FALSE(SizeIsValid(start + "\xFF\xE1" + U16(3) + "xx" + kFrame)) << "junk behind a segment";
    EXPECT_FALSE(SizeIsValid(start + "\xFF\xE1" + U16(1) + kFrame)) << "length below its own";
    EXPECT_FALSE(SizeIsValid(start + "\xFF\xD9" + kFrame));
    EXPECT_FALSE(SizeIsValid(start + "\xFF\xDA" + U16(2) + kFrame));
    for (size_t size = 2; size < kFrame.size() - 3; ++size)
        EXPECT_EQ(SizeIsValid(start + kFrame.substr(0, size)), size >= 10) << size;
}

TEST(JpegSize, JunkEndsTheWalkAtOnce) {
    CountingSource source(uint64_t{1} << 40, "\xFF\xD8\xFF\xE1" + U16(20000));
    media::ByteCursor cursor(source);
    EXPECT_FALSE(media::JpegSizeIsValid(cursor));
    EXPECT_EQ(source.reads, 2);
}

}  // namespace
