#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "base/FileDescriptor.h"
#include "libraries/ovnx-media/FrameChoice.h"
#include "libraries/ovnx-media/VideoFrame.h"
#include "libraries/ovnx-media/apple/ShownKeyframes.h"
#include "sample-media/MadeMedia.h"
#include "tests/support/TempFolder.h"

namespace ovnxmedia {
namespace {

constexpr Size kBox{160, 90};

Picture FrameOfFile(const std::string& path, Size box = kBox, const Budget& budget = Budget()) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const std::unique_ptr<const int, void (*)(const int*)> closer(&fd, [](const int* each) { close(*each); });
    return DecodeVideoFrame(fd, box, budget);
}

// OVNX_MEDIA_OK when a picture came.
OvnxMediaStatus StatusOf(const std::string& path, const Budget& budget = Budget()) {
    try {
        const Picture picture = FrameOfFile(path, kBox, budget);
        EXPECT_LE(picture.size.width, kBox.width);
        EXPECT_LE(picture.size.height, kBox.height);
        EXPECT_EQ(picture.samples.size(), picture.Stride() * picture.size.height);
        return OVNX_MEDIA_OK;
    } catch (const Failure& failure) {
        return failure.status();
    }
}

made::Shown Look(const Picture& picture) {
    return made::Look(picture.samples.data(), static_cast<int>(picture.size.width),
                      static_cast<int>(picture.size.height));
}

TEST(VideoFrame, IsTheKeyframeAtATenth) {
    made::Video video;
    video.frames = 100;
    video.keyInterval = 5;
    const int tenth = 10;
    struct Case {
        const char* what;
        void (*change)(made::Video&);
    };
    const Case cases[] = {
        {"plain", [](made::Video&) {}},
        {"moov in front", [](made::Video& each) { each.moovInFront = true; }},
        {"no reordering", [](made::Video& each) { each.bFrames = 0; }},
        {"full range", [](made::Video& each) { each.fullRange = true; }},
        {"high definition", [](made::Video& each) { each.width = 640, each.height = 720; }},
        {"a named matrix", [](made::Video& each) { each.namesMatrix = true; }},
        {"Matroska", [](made::Video& each) { each.format = "matroska"; }},
    };
    for (const Case& each : cases) {
        made::Video changed = video;
        each.change(changed);
        const made::Shown shown = Look(FrameOfFile(made::Path(changed)));
        EXPECT_EQ(shown.number, tenth) << each.what << " " << shown.corners;
    }
}

// As decoders of the system are asked for it, which take times and no tables.
TEST(VideoFrame, HasATimeByTheTables) {
    made::Video video;
    video.frames = 100;
    for (const int interval : {4, 7, 40}) {
        video.keyInterval = interval;
        for (video.bFrames = 0; video.bFrames <= 2; video.bFrames += 2) {
            const std::string path = made::Path(video);
            const KXP::FileDescriptor file = KXP::OpenForRead(path);
            const ShownTimes shown = KeyframesFromTenth(file.get(), FrameChoice::kTries, Budget());
            std::vector<long> frames;
            for (const int64_t time : shown.times)
                frames.push_back(std::lround(static_cast<double>(time) * 30 / shown.unit));
            const int first = Look(FrameOfFile(path)).number;
            std::vector<long> expected;
            for (int frame = first; frame < video.frames && expected.size() < 5; frame += interval)
                expected.push_back(frame);
            EXPECT_EQ(frames, expected) << interval << " " << video.bFrames;
        }
    }
}

TEST(VideoFrame, PassesOverALeadInOfOneColour) {
    made::Video video;
    video.frames = 40;
    video.keyInterval = 4;
    video.blackFrames = 18;  // keyframes 4, 8, 12 and 16 are black
    EXPECT_EQ(Look(FrameOfFile(made::Path(video))).number, 20);
    video.format = "matroska";
    EXPECT_EQ(Look(FrameOfFile(made::Path(video))).number, 20);
    video.blackFrames = 22;  // and now the fifth
    EXPECT_EQ(Look(FrameOfFile(made::Path(video))).number, -1);
}

TEST(VideoFrame, StandsAsPlayersShowIt) {
    struct Case {
        int rotation;
        const char* corners;
        Size size;
    };
    for (const Case& each :
         {Case{90, "brwg", {51, 90}}, Case{180, "wbgr", {160, 90}}, Case{270, "gwrb", {51, 90}}}) {
        made::Video video;
        video.frames = 10;
        video.rotation = each.rotation;
        const Picture picture = FrameOfFile(made::Path(video));
        EXPECT_EQ(Look(picture).corners, each.corners) << each.rotation;
        EXPECT_EQ(picture.size.width, each.size.width) << each.rotation;
        EXPECT_EQ(picture.size.height, each.size.height) << each.rotation;
    }
    made::Video wide;
    wide.width = 160;
    wide.frames = 10;
    wide.pixelWidth = 2;
    EXPECT_EQ(FrameOfFile(made::Path(wide), {1000, 1000}).size.width, 320u);
}

TEST(VideoFrame, SaysWhatIsNoVideo) {
    const TempFolder folder;
    EXPECT_EQ(StatusOf(folder.Write("text", "This is no video at all.")), OVNX_MEDIA_UNKNOWN_FORMAT);
    EXPECT_EQ(StatusOf(folder.Write("empty", "")), OVNX_MEDIA_UNKNOWN_FORMAT);
    EXPECT_EQ(StatusOf(folder.path()), OVNX_MEDIA_UNREADABLE);
    made::Video video;
    video.moovInFront = true;
    std::filesystem::copy_file(made::Path(video), folder / "v");
    const std::string whole = folder.Read("v");
    EXPECT_EQ(StatusOf(folder.Write("v", whole.substr(0, whole.size() * 3 / 4))), OVNX_MEDIA_OK);
}

TEST(VideoFrame, EndsWhereAHoleBegins) {
    const TempFolder folder;
    made::Video video;
    video.format = "matroska";
    std::filesystem::copy_file(made::Path(video), folder / "v");
    const std::string whole = folder.Read("v");
    for (const auto& [size, expected] :
         {std::pair(whole.size() / 2, OVNX_MEDIA_OK), std::pair(size_t{48}, OVNX_MEDIA_DAMAGED)}) {
        folder.Write("v", whole.substr(0, size));
        std::filesystem::resize_file(folder / "v", uint64_t{1} << 40);
        EXPECT_EQ(StatusOf(folder / "v"), expected) << size;
    }
}

// Bytes put over those that begin `offset` bytes after a box's type; the last of its name, as brands and
// sounds come first.
std::string Replaced(std::string bytes, const std::string& type, size_t offset, const std::string& by) {
    return bytes.replace(bytes.rfind(type) + offset, by.size(), by);
}

TEST(VideoFrame, LimitsHoldBeforeAnythingIsAllocated) {
    TempFolder folder;
    const made::Video video;
    std::filesystem::copy_file(made::Path(video), folder / "v");
    const std::string whole = folder.Read("v");
    const std::string manySamples = Replaced(whole, "stsz", 8, std::string("\0\0\0\1\x7F\xFF\xFF\xFF", 8));
    EXPECT_EQ(StatusOf(folder.Write("v", manySamples)), OVNX_MEDIA_OVER_LIMIT);
    const std::string manyPixels = Replaced(whole, "avc1", 28, "\x7F\xFF\x7F\xFF");
    EXPECT_EQ(StatusOf(folder.Write("v", manyPixels)), OVNX_MEDIA_OVER_LIMIT);

    EXPECT_EQ(StatusOf(made::Path(video), Budget(std::chrono::seconds(0))), OVNX_MEDIA_OVER_LIMIT);
    const auto stop = [](void*) { return 1; };
    EXPECT_EQ(StatusOf(made::Path(video), Budget(Budget::kLimit, stop, nullptr)), OVNX_MEDIA_STOPPED);
}

TEST(VideoFrame, LeavesTheDescriptorAsItWas) {
    const int fd = open(made::Path({}).c_str(), O_RDONLY | O_CLOEXEC);
    lseek(fd, 7, SEEK_SET);
    DecodeVideoFrame(fd, kBox, Budget());
    EXPECT_EQ(lseek(fd, 0, SEEK_CUR), 7);
    const int next = dup(fd);
    EXPECT_EQ(next, fd + 1);  // nothing else was left open
    close(next);
    close(fd);
}

}  // namespace
}  // namespace ovnxmedia
