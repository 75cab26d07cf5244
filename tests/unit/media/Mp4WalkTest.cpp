#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/Mp4Walk.h"
#include "tests/support/CaptureBytes.h"
#include "tests/unit/media/WalkTest.h"

namespace {

using captures::Block;
using captures::Movie;
using samples::Mp4Box;
using samples::U32;
using samples::U64;

const std::string kShare = Block("Ovirastream SHARE", "{}");

WalkOutcome Walk(const std::string& bytes) {
    return RunWalk(media::WalkMp4, bytes);
}

void ExpectEnd(const WalkOutcome& outcome, uint32_t code, const char* finding) {
    EXPECT_EQ(static_cast<uint32_t>(outcome.code), code);
    ASSERT_EQ(outcome.findings.size(), finding ? 1u : 0u);
    if (finding) {
        EXPECT_STREQ(outcome.findings[0], finding);
    }
}

TEST(Mp4Walk, OtherBlocksAreNotOwnAndTheWalkGoesOn) {
    const std::string other = Block("Ovirastream LUMIS", R"({"DRSAppName":"A"})");
    for (const std::string& text :
         {other, std::string("[]"), std::string("{\"Source\":7}"), std::string("no JSON"),
          Block("Ovirastream SHARE ", "{}"), Block("Ovirastream SHARE\\u0000", "{}")}) {
        const WalkOutcome outcome = Walk(Movie(text));
        ExpectEnd(outcome, 1, nullptr);
        EXPECT_FALSE(outcome.isOwn) << text;
        EXPECT_EQ(outcome.drsName, "");
    }
    // Behind the overshoot a second box counts.
    EXPECT_TRUE(Walk(Mp4Box("tagc", "{}") + "{}" + Mp4Box("tagc", kShare)).isOwn);
    EXPECT_FALSE(Walk(Mp4Box("tagc", "{}") + Mp4Box("tagc", kShare)).isOwn);
}

TEST(Mp4Walk, EntersTheFirstMoovAndTheFirstUdtaOnly) {
    const std::string tags = Mp4Box("tagc", kShare);
    EXPECT_TRUE(Walk(Mp4Box("udta", tags)).isOwn);
    EXPECT_FALSE(Walk(Mp4Box("trak", tags)).isOwn);
    EXPECT_FALSE(Walk(Mp4Box("moov", "") + Mp4Box("moov", tags)).isOwn);
    EXPECT_FALSE(Walk(Mp4Box("udta", "") + Movie(kShare)).isOwn);
    EXPECT_TRUE(Walk(U32(1) + "moov" + U64(1 << 20) + Mp4Box("udta", tags)).isOwn);
}

TEST(Mp4Walk, MalformedSizes) {
    const char* small = "Malformed MP4 file. Box size less than header overhead.";
    for (uint32_t size = 2; size < 8; ++size)
        ExpectEnd(Walk(U32(size) + "moov" + kShare), 0x8007000D, small);
    ExpectEnd(Walk(U32(0) + "mdat" + kShare), 1, small);
    for (const uint64_t size : {0, 8, 15})
        ExpectEnd(Walk(U32(1) + "mdat" + U64(size)), 1,
                  "Malformed MP4 file. Box size less than header overhead with ext size.");
    ExpectEnd(Walk(U32(1) + "mdat"), 0x80004005, "Failed to read from MP4 file.");
    ExpectEnd(Walk(U32(1) + "mdat" + "\x01"), 0x8007000D, nullptr);
    ExpectEnd(Walk(U32(1) + "mdat" + std::string(7, '\0')), 1,
              "Malformed MP4 file. Box size less than header overhead with ext size.");
    ExpectEnd(Walk(U32(1) + "mdat" + U64(16) + Movie(kShare)), 1, nullptr);
}

TEST(Mp4Walk, PositionsBehindTheEndAreNoFault) {
    ExpectEnd(Walk(U32(8) + "moo"), 1, nullptr);
    ExpectEnd(Walk(U32(0xFFFFFFFF) + "mdat" + Movie(kShare)), 1, nullptr);
    // A payload that would lead back to the start of the file, were the sum to wrap.
    for (const uint64_t size : {uint64_t{1} << 63, UINT64_MAX - 15, UINT64_MAX}) {
        const WalkOutcome outcome = Walk(Movie("{}") + "{}" + U32(1) + "mdat" + U64(size) + Movie(kShare));
        ExpectEnd(outcome, 1, nullptr);
        EXPECT_FALSE(outcome.isOwn);
    }
}

TEST(Mp4Walk, TagsAtTheEndOfTheFile) {
    const char* nothing = "Failed to read box data from MP4 file.";
    ExpectEnd(Walk(Mp4Box("tagc", "")), 0x80004005, nothing);
    ExpectEnd(Walk(U32(100) + "tagc"), 0x80004005, nothing);
    // Cut short, and yet the text is whole: the flag stands beside the failure.
    const WalkOutcome cut = Walk(U32(2000) + "tagc" + kShare);
    ExpectEnd(cut, 0x8007000D, nullptr);
    EXPECT_TRUE(cut.isOwn);
}

TEST(Mp4Walk, ReadsNoMoreThan4096BytesOfTags) {
    const auto padded = [](size_t size) { return kShare + std::string(size - kShare.size(), ' '); };
    EXPECT_TRUE(Walk(Movie(padded(5000))).isOwn) << "blanks are cut, not the text";
    std::string text = padded(5000);
    std::rotate(text.begin() + 1, text.begin() + static_cast<long>(kShare.size()), text.end());
    EXPECT_FALSE(Walk(Movie(text)).isOwn);
    // From behind the 4096 bytes the whole payload is skipped.
    const std::string next = Mp4Box("tagc", kShare);
    EXPECT_TRUE(Walk(Mp4Box("tagc", std::string(5000, ' ')) + std::string(4096, '\0') + next).isOwn);
    EXPECT_TRUE(Walk(Movie(kShare + std::string(3, '\0'))).isOwn) << "writers may end the text with zeros";
}

}  // namespace
