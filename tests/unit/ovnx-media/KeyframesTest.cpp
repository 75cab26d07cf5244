#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "OvnxMedia.h"
#include "base/FileDescriptor.h"
#include "sample-media/DecodedMedia.h"
#include "sample-media/MadeMedia.h"

namespace {

int32_t List(const std::string& path, std::vector<int64_t>& times, int64_t& frame,
             int (*stop)(void*) = nullptr) {
    const KXP::FileDescriptor file = KXP::OpenForRead(path);
    OvnxMediaKeyframeList list{times.data(), times.size(), stop, nullptr, 0, 0};
    const int32_t status = OvnxMediaKeyframes(file.get(), &list);
    times.resize(list.count);
    frame = list.frame;
    return status;
}

TEST(Keyframes, AreWherePlayersShowThem) {
    made::Video video;
    video.frames = 90;
    video.keyInterval = 20;
    for (video.bFrames = 0; video.bFrames <= 2; video.bFrames += 2) {
        const std::string path = made::Path(video);
        const std::vector<made::ShownFrame> shown = made::Decode(path).frames;
        std::vector<int64_t> times(5);
        int64_t frame = 0;
        ASSERT_EQ(List(path, times, frame), OVNX_MEDIA_OK);
        ASSERT_EQ(times.size(), 5u);
        for (size_t i = 0; i < times.size(); ++i)
            EXPECT_NEAR(static_cast<double>(times[i]) / 1e7, shown.at(20 * i).time, 0.001) << i;
        EXPECT_NEAR(static_cast<double>(frame), 1e7 / 30, 2000);
        EXPECT_EQ(List(path, times, frame, [](void*) { return 1; }), OVNX_MEDIA_STOPPED);
        times.resize(4);
        EXPECT_EQ(List(path, times, frame), OVNX_MEDIA_OVER_LIMIT);
    }
    video.format = "matroska";
    std::vector<int64_t> times(5);
    int64_t frame = 0;
    EXPECT_EQ(List(made::Path(video), times, frame), OVNX_MEDIA_UNKNOWN_FORMAT);
}

}  // namespace
