#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"
#include "tests/support/CaptureBytes.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

class OwnershipSniffer : public testing::Test {
  protected:
    const TempFolder folder_;
};

struct Row {
    const char* name;
    const std::string& bytes;
    const char *fileType, *subType;
    bool isOwn;
};

TEST_F(OwnershipSniffer, ExtensionSelectsTheWalkAndTheBytesDecide) {
    const std::string png = captures::Png(captures::PngText("Software", "Ovirastream SHARE"));
    const std::string jpeg = captures::OwnJpeg(100, 100);
    const std::string mp4 = captures::Movie(captures::Block("Ovirastream SDK", "{}"));
    for (const Row& row :
         {Row{"A.PNG", png, "image", "Normal", true}, Row{"a.jpg", png, "image", "Unknown", false},
          Row{"a.mp4", png, "video", "Unknown", false}, Row{"a.png2", png, "other", "Unknown", false},
          Row{"png", png, "other", "Unknown", false}, Row{"b.jps", jpeg, "image", "Stereo", true},
          Row{"b.jpeg", jpeg, "other", "Unknown", false}, Row{"c.Mp4", mp4, "video", "Highlight", true}}) {
        media::SniffResult result;
        EXPECT_GE(media::SniffFile(folder_.Write(row.name, row.bytes), result), 0) << row.name;
        EXPECT_EQ(result.fileType + result.fileSubType, std::string(row.fileType) + row.subType) << row.name;
        EXPECT_EQ(result.isOwn, row.isOwn) << row.name;
    }
}

TEST_F(OwnershipSniffer, ResetsWhatItDecidesAndKeepsTheHighlight) {
    media::SniffResult result;
    result.fileSubType = result.drsName = result.highlightName = "before";
    EXPECT_EQ(media::SniffFile("no dot", result), 1);
    EXPECT_EQ(result.fileSubType + result.drsName + result.highlightName, "Unknownbefore");
}

TEST_F(OwnershipSniffer, WhatIsNoReadableFileNeverBlocks) {
    ASSERT_EQ(mkfifo((folder_ / "pipe.png").c_str(), 0600), 0);
    folder_.MakeFolder("folder.mp4");
    fs::create_symlink("/dev/zero", folder_ / "device.jpg");
    const std::string real =
        folder_.Write("real.png", captures::Png(captures::PngText("Software", "Ovirastream SHARE")));
    for (const std::string& path :
         {folder_ / "pipe.png", folder_ / "folder.mp4", folder_ / "device.jpg", folder_ / "missing.jps",
          real + std::string("\0.png", 5), folder_ / (std::string(300, 'x') + ".png")}) {
        media::SniffResult result;
        EXPECT_EQ(static_cast<uint32_t>(media::SniffFile(path, result)), 0x80004005u) << path;
    }
}

TEST_F(OwnershipSniffer, FindsTheMovieBehindFiveGigabytes) {
    constexpr uint64_t kHole = 5'000'000'000;
    const std::string path = folder_.Write("hole.mp4", samples::U32(1) + "mdat" + samples::U64(kHole + 16));
    fs::resize_file(path, kHole + 16);
    std::ofstream(path, std::ios::binary | std::ios::app)
        << captures::Movie(captures::Block("Ovirastream SDK", "{}"));
    media::SniffResult result;
    EXPECT_EQ(media::SniffFile(path, result), 1);
    EXPECT_TRUE(result.isOwn);
}

}  // namespace
