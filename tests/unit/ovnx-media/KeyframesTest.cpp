#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "OvnxMedia.h"
#include "base/FileDescriptor.h"
#include "sample-media/DecodedMedia.h"
#include "sample-media/MadeMedia.h"

namespace {

constexpr int64_t kTicks = 10'000'000;  // a second

struct Listed {
    int32_t status = 0;
    std::vector<int64_t> times;
    int64_t frame = 0;
};

Listed List(const std::string& path, size_t capacity = 100, int (*stop)(void*) = nullptr) {
    const KXP::FileDescriptor file = KXP::OpenForRead(path);
    Listed listed;
    listed.times.resize(capacity);
    OvnxMediaKeyframeList list{listed.times.data(), capacity, stop, nullptr, 0, 0};
    listed.status = OvnxMediaKeyframes(file.get(), &list);
    listed.times.resize(list.count);
    listed.frame = list.frame;
    return listed;
}

TEST(Keyframes, AreWherePlayersShowThem) {
    for (const int bFrames : {0, 2}) {
        made::Video video;
        video.bFrames = bFrames;
        video.moovInFront = bFrames == 0;
        video.frames = 90;
        video.keyInterval = 20;
        const std::string path = made::Path(video);
        const std::vector<made::ShownFrame> shown = made::Decode(path).frames;
        const Listed listed = List(path);
        ASSERT_EQ(listed.status, OVNX_MEDIA_OK);
        ASSERT_EQ(listed.times.size(), 5u);
        for (size_t i = 0; i < listed.times.size(); ++i)
            EXPECT_NEAR(static_cast<double>(listed.times[i]) / kTicks, shown.at(20 * i).time, 0.001) << i;
        EXPECT_NEAR(static_cast<double>(listed.frame), kTicks / 30.0, 2000);
    }
}

TEST(Keyframes, OfOtherFilesAreNone) {
    made::Video video;
    video.keyInterval = 10;
    const std::string path = made::Path(video);
    EXPECT_EQ(List(path, 5).status, OVNX_MEDIA_OVER_LIMIT);
    EXPECT_EQ(List(path, 6).status, OVNX_MEDIA_OK);
    EXPECT_EQ(List(path, 100, [](void*) { return 1; }).status, OVNX_MEDIA_STOPPED);
    EXPECT_EQ(List("/dev/null").status, OVNX_MEDIA_UNREADABLE);
    made::Video other;
    other.format = "matroska";
    EXPECT_EQ(List(made::Path(other)).status, OVNX_MEDIA_UNKNOWN_FORMAT);
}

}  // namespace
