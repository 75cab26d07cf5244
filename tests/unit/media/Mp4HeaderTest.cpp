// What the comparison with a plain form, by the fuzz target, does not see: how much is read and logged.
#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/Mp4Header.h"
#include "sample-captures/MediaBytes.h"
#include "tests/support/LogCapture.h"

namespace {

struct CountingSource final : media::ByteSource {
    explicit CountingSource(std::string all) : bytes(std::move(all)) {}
    size_t ReadAt(uint64_t position, char* out, size_t count) override {
        const size_t got = media::MemorySource(bytes).ReadAt(position, out, count);
        bytesRead += got;
        return got;
    }

    const std::string bytes;
    uint64_t bytesRead = 0;
};

TEST(Mp4Header, AFileOfBoxesIsReadOnceAndDoesNotFloodTheLog) {
    const LogCapture log;
    std::string boxes;
    for (int i = 0; i < 50000; ++i)
        boxes += samples::Mp4Box("\xFF\n%s", "");
    CountingSource source(boxes);
    media::Mp4HeaderInfo info;
    EXPECT_EQ(media::ReadMp4Header(source, true, info), 1);
    EXPECT_LT(source.bytesRead, boxes.size() + boxes.size() / 50);
    EXPECT_TRUE(log.HasLine(3, "Box ??%s"));
    EXPECT_EQ(log.Count("Box ??%s"), 1000);
}

TEST(Mp4Header, AFileThatCannotBeOpenedLeavesTheResultsAlone) {
    const LogCapture log;
    double duration = 5;
    std::string audioType = "before";
    unsigned int side = 6;
    EXPECT_EQ(media::FindMP4HeaderInfo("/nowhere/none.mp4", duration, audioType, false, side, side),
              static_cast<int32_t>(0x80004005));
    EXPECT_TRUE(log.HasLine(2, "Failed to open none.mp4"));
    EXPECT_EQ(audioType + std::to_string(duration + side), "before11.000000");
}

}  // namespace
