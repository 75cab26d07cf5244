#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/Mp4Header.h"
#include "sample-captures/MediaBytes.h"
#include "tests/support/LogCapture.h"

namespace {

using samples::Mp4Box;
using samples::U16;
using samples::U32;
using samples::U64;

constexpr auto kFailure = static_cast<int32_t>(0x80004005);
constexpr auto kInvalidData = static_cast<int32_t>(0x8007000D);
const std::string kTail(120, '\0');

struct CountingSource final : media::ByteSource {
    explicit CountingSource(std::vector<char> all) : bytes(std::move(all)) {}
    size_t ReadAt(uint64_t position, char* out, size_t count) override {
        const size_t got = media::MemorySource({bytes.data(), bytes.size()}).ReadAt(position, out, count);
        bytesRead += got;
        return got;
    }

    const std::vector<char> bytes;  // of exactly the size, so that the sanitizers see a step behind the end
    uint64_t bytesRead = 0;
};

struct Outcome : media::Mp4HeaderInfo {
    int32_t code = 0;
    uint64_t bytesRead = 0;
};

Outcome Read(const std::string& bytes, bool wantSize) {
    CountingSource source({bytes.begin(), bytes.end()});
    Outcome outcome;
    outcome.duration = outcome.width = outcome.height = 77;
    outcome.code = media::ReadMp4Header(source, wantSize, outcome);
    outcome.bytesRead = source.bytesRead;
    return outcome;
}

std::string MovieHeader(char version, uint32_t scale, uint64_t duration, uint32_t nextTrack, bool wide) {
    const std::string times = wide ? U64(0) + U64(0) + U32(scale) + U64(duration)
                                   : U32(0) + U32(0) + U32(scale) + U32(static_cast<uint32_t>(duration));
    return Mp4Box("mvhd", version + std::string(3, '\0') + times + std::string(76, '\1') + U32(nextTrack));
}

std::string TrackHeader(size_t size, uint16_t width, uint16_t height) {
    return Mp4Box("tkhd", std::string(size - 16, '\1') + U16(width) + U16(9) + U16(height) + U16(9));
}

}  // namespace

TEST(Mp4Header, ReadsTheMovieHeaderOfEitherVersion) {
    struct {
        std::string header;
        double duration;
        const char* audioType;
    } const cases[] = {
        {MovieHeader(0, 600, 900, 3, false), 1.5, "Single"},
        {MovieHeader(0, 600, 0xFFFFFFFF, 4, false), 4294967295.0 / 600, "Separate"},
        {MovieHeader(1, 1000, 1ull << 40, 0xFFFFFFFF, true), 1099511627.776, "Separate"},
        {MovieHeader(1, 1, UINT64_MAX, 0, true), 18446744073709551616.0, "Single"},
        {MovieHeader(0, 0, 5, 2, false), HUGE_VAL, "Single"},
        {Mp4Box("mvhd", std::string(101, '\0')) + MovieHeader(0, 1, 7, 3, false), 7, "Single"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        const Outcome outcome = Read(Mp4Box("moov", row.header) + kTail, false);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.duration, row.duration);
        EXPECT_EQ(outcome.audioType, row.audioType);
    }
    EXPECT_TRUE(std::isnan(Read(MovieHeader(0, 0, 0, 2, false) + kTail, false).duration));
}

TEST(Mp4Header, TheFirstTrackHeaderOfAKnownSizeTellsThePicture) {
    const LogCapture log;
    const std::string other = Mp4Box("trak", TrackHeader(92, 3, 4)) + kTail;
    struct {
        std::string first;
        unsigned int width, height;
    } const cases[] = {
        {TrackHeader(92, 1920, 1080), 1920, 1080},
        {TrackHeader(104, 0x8001, 0xFFFF), 0x8001, 0xFFFF},
        {TrackHeader(92, 0, 0), 0, 0},
        {TrackHeader(96, 1, 2), 3, 4},
        {MovieHeader(1, 1, 1, 3, false), 3, 4},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        const Outcome outcome = Read(Mp4Box("moov", Mp4Box("trak", row.first) + other), true);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.width, row.width);
        EXPECT_EQ(outcome.height, row.height);
    }
    for (const char* type : {"moov", "trak", "tkhd"})
        EXPECT_TRUE(log.HasLine(3, std::string("Box ") + type));
}

TEST(Mp4Header, EndsWithACode) {
    const std::string movie = MovieHeader(0, 1, 7, 3, false) + kTail;
    const auto extended = [](uint64_t size) { return U32(1) + "wide" + U64(size); };
    struct {
        std::string bytes;
        int32_t code;
        double duration;
    } const cases[] = {
        {"", kFailure, 0},
        {MovieHeader(1, 600, 900, 3, false) + kTail, kInvalidData,
         0},  // the version has to agree with the size
        {MovieHeader(0, 600, 900, 3, true), kInvalidData, 0},
        {movie.substr(0, 119), 1, 0},  // a box that near to the end is not looked at
        {Mp4Box("free", std::string(112, ' ')), kFailure, 0},
        {Mp4Box("free", std::string(112, ' ')) + "x", 1, 0},
        {U32(0) + "mdat" + movie, kInvalidData, 0},
        {U32(7) + "moov" + movie, kInvalidData, 0},
        {U32(0xFFFFFFFF) + "free" + movie, kFailure, 0},
        {extended(16) + movie, 1, 7},
        {extended(0) + movie, kInvalidData, 0},
        {extended(15) + movie, kInvalidData, 0},
        {extended(INT64_MAX) + movie, kFailure, 0},
        {Mp4Box("free", "") + extended(INT64_MAX) + movie, kInvalidData, 0},
        {extended(1ull << 63) + movie, kInvalidData, 0},
        {extended(UINT64_MAX - 7) + movie, kInvalidData, 0},
        {U32(1) + "moov" + Mp4Box("free", "") + movie, 1, 7},  // entered before its size is looked at
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        const Outcome outcome = Read(row.bytes, false);
        EXPECT_EQ(outcome.code, row.code);
        EXPECT_EQ(outcome.duration, row.duration);
    }
}

TEST(Mp4Header, AFileOfBoxesIsReadOnceAndDoesNotFloodTheLog) {
    const LogCapture log;
    std::string boxes;
    for (int i = 0; i < 50000; ++i)
        boxes += Mp4Box("\xFF\n%s", "");
    const Outcome outcome = Read(boxes, true);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_LT(outcome.bytesRead, boxes.size() + boxes.size() / 50);
    EXPECT_EQ(log.Count("Box ??%s"), 1000);
}

TEST(Mp4Header, AFileThatCannotBeOpenedLeavesThePlacesAlone) {
    const LogCapture log;
    double duration = 5;
    std::string audioType = "before";
    unsigned int side = 6;
    EXPECT_EQ(media::FindMP4HeaderInfo("/nowhere/none.mp4", duration, audioType, false, side, side),
              kFailure);
    EXPECT_TRUE(log.HasLine(2, "Failed to open none.mp4"));
    EXPECT_EQ(audioType + std::to_string(duration + side), "before11.000000");
}
