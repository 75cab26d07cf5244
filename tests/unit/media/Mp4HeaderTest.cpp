#include <vector>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/Mp4Header.h"
#include "sample-captures/MediaBytes.h"
#include "tests/support/LogCapture.h"

namespace {

using samples::Mp4Box;
using samples::U32;

constexpr auto kFailure = static_cast<int32_t>(0x80004005);
struct CountingSource final : media::ByteSource {
    explicit CountingSource(std::vector<char> all) : bytes(std::move(all)) {}
    size_t ReadAt(uint64_t position, char* out, size_t count) override {
        const size_t got = media::MemorySource({bytes.data(), bytes.size()}).ReadAt(position, out, count);
        bytesRead += got;
        return got;
    }

    const std::vector<char> bytes;
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

}  // namespace

TEST(Mp4Header, TellsTheMovieOrThePicture) {
    const LogCapture log;
    const std::string header(84, '\0');
    const std::string movie =
        Mp4Box("mvhd", std::string(12, '\0') + U32(600) + U32(900) + header.substr(8) + U32(4));
    const std::string track =
        Mp4Box("trak", Mp4Box("tkhd", header.substr(8) + U32(1920 << 16 | 9) + U32(1080 << 16)));
    const std::string file = Mp4Box("moov", movie + track) + std::string(120, '\0');
    const Outcome whole = Read(file, false);
    EXPECT_EQ(whole.code, 1);
    EXPECT_EQ(whole.audioType + std::to_string(whole.duration), "Separate1.500000");
    const Outcome picture = Read(file, true);
    EXPECT_EQ(picture.width, 1920u);
    EXPECT_EQ(picture.height, 1080u);
    for (const char* type : {"moov", "mvhd", "trak", "tkhd"})
        EXPECT_TRUE(log.HasLine(3, std::string("Box ") + type));
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
