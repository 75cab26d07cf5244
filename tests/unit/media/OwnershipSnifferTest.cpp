#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "CobalixUtil.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"
#include "tests/support/CaptureBytes.h"

namespace {

namespace fs = std::filesystem;

class OwnershipSniffer : public testing::Test {
  protected:
    OwnershipSniffer() {
        std::string name = (fs::temp_directory_path() / "sniffXXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
        folder_ = name;
    }
    ~OwnershipSniffer() override { fs::remove_all(folder_); }

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }

    std::string Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

    fs::path folder_;
};

struct Row {
    const char* name;
    const char* fileType;
    const char* subType;
    bool isOwn;
};

// The bytes of every kind, under every name: the extension selects the walk, the bytes decide.
TEST_F(OwnershipSniffer, ExtensionSelectsTheWalk) {
    const std::string png = captures::Png(captures::PngText("Software", "Ovirastream SHARE"));
    const std::string jpeg = captures::OwnJpeg(100, 100);
    const std::string mp4 = captures::FileType() + captures::Movie(captures::Block("Ovirastream SDK", "{}"));
    const Row pngRows[] = {{"a.png", "image", "Normal", true},    {"A.PNG", "image", "Normal", true},
                           {"a.jpg", "image", "Unknown", false},  {"a.mp4", "video", "Unknown", false},
                           {"a.png2", "other", "Unknown", false}, {"png", "other", "Unknown", false},
                           {"a.", "other", "Unknown", false},     {"a.exr", "other", "Unknown", false}};
    const Row jpegRows[] = {{"b.jpg", "image", "Unknown", true},
                            {"b.JpG", "image", "Unknown", true},
                            {"b.jps", "image", "Stereo", true},
                            {"b.jpeg", "other", "Unknown", false},
                            {"b.png", "image", "Unknown", false}};
    const Row mp4Rows[] = {{"c.Mp4", "video", "Highlight", true}, {"c.mov", "other", "Unknown", false}};
    const auto check = [this](const Row& row, const std::string& bytes) {
        media::SniffResult result;
        EXPECT_GE(media::SniffFile(Write(row.name, bytes), result), 0) << row.name;
        EXPECT_EQ(result.fileType, row.fileType) << row.name;
        EXPECT_EQ(result.fileSubType, row.subType) << row.name;
        EXPECT_EQ(result.isOwn, row.isOwn) << row.name;
    };
    for (const Row& row : pngRows)
        check(row, png);
    for (const Row& row : jpegRows)
        check(row, jpeg);
    for (const Row& row : mp4Rows)
        check(row, mp4);
}

TEST_F(OwnershipSniffer, ResetsWhatItDecidesAndKeepsTheHighlight) {
    media::SniffResult result;
    result.isOwn = true;
    result.fileType = result.fileSubType = result.fileSource = "before";
    result.drsName = result.drsProfileName = result.shortName = "before";
    result.cmsId = 5;
    result.highlightName = "kept";
    EXPECT_EQ(media::SniffFile("no dot", result), 1);
    EXPECT_FALSE(result.isOwn);
    EXPECT_EQ(result.fileType, "other");
    EXPECT_EQ(result.fileSubType, "Unknown");
    EXPECT_EQ(result.fileSource, "Undefined");
    EXPECT_EQ(result.drsName + result.drsProfileName + result.shortName, "");
    EXPECT_EQ(result.cmsId, 0);
    EXPECT_EQ(result.highlightName, "kept");
}

TEST_F(OwnershipSniffer, WhatIsNoReadableFileNeverBlocks) {
    ASSERT_EQ(mkfifo(Path("pipe.png").c_str(), 0600), 0);
    ASSERT_TRUE(fs::create_directory(Path("folder.mp4")));
    fs::create_symlink("/dev/zero", Path("device.jpg"));
    fs::create_symlink("loop.jpg", Path("loop.jpg"));
    Write("real.png", captures::Png(captures::PngText("Software", "Ovirastream SHARE")));
    for (const std::string& path :
         {Path("pipe.png"), Path("folder.mp4"), Path("device.jpg"), Path("loop.jpg"), Path("missing.jps"),
          Path("real.png") + std::string("\0.png", 5), Path(std::string(300, 'x') + ".png")}) {
        media::SniffResult result;
        EXPECT_EQ(static_cast<uint32_t>(media::SniffFile(path, result)), 0x80004005u) << path;
        EXPECT_FALSE(result.isOwn);
        EXPECT_NE(result.fileType, "other");
        bool isValid = true;
        EXPECT_EQ(static_cast<uint32_t>(media::CheckIfJPGFileSizeIsValid(path, isValid)), 0x80070006u)
            << path;
        EXPECT_FALSE(isValid);
    }
}

TEST_F(OwnershipSniffer, UnreadableFileCannotBeOpened) {
    const std::string path = Write("secret.png", "x");
    fs::permissions(path, fs::perms::none);
    fs::permissions(folder_, fs::perms::others_exec, fs::perm_options::add);
    // Permissions bind everybody but the superuser.
    const bool isSuperuser = geteuid() == 0;
    if (isSuperuser) {
        ASSERT_EQ(seteuid(65534), 0);
    }
    media::SniffResult result;
    const int32_t code = media::SniffFile(path, result);
    if (isSuperuser) {
        ASSERT_EQ(seteuid(0), 0);
    }
    EXPECT_EQ(static_cast<uint32_t>(code), 0x80004005u);
}

TEST_F(OwnershipSniffer, LogsFailuresUnderTheFileName) {
    std::string log;
    KXP::LogInit(
        KXP::ProfileProduct,
        [](const char* line, void* context) {
            const std::string_view text = line;
            // What comes before the text is the log's affair.
            *static_cast<std::string*>(context) += std::string(text.substr(text.find(".cpp:"))) + "\n";
        },
        &log);
    media::SniffResult result;
    (void)media::SniffFile(Path("missing.mp4"), result);
    (void)media::SniffFile(Write("bad.mp4", samples::U32(2) + "moov"), result);
    bool isValid = false;
    (void)media::CheckIfJPGFileSizeIsValid(Path("missing.jpg"), isValid);
    KXP::LogInit(KXP::ProfileProduct, nullptr, nullptr);
    EXPECT_THAT(log,
                testing::MatchesRegex(".cpp:[0-9]+ Failed to open missing.mp4\n"
                                      ".cpp:[0-9]+ Malformed MP4 file. Box size less than header overhead.\n"
                                      ".cpp:[0-9]+ Could not open missing.jpg\n"));
}

TEST_F(OwnershipSniffer, JpegSizeOfAFile) {
    bool isValid = false;
    EXPECT_EQ(media::CheckIfJPGFileSizeIsValid(Write("any name", captures::OwnJpeg(8192, 8192)), isValid), 1);
    EXPECT_TRUE(isValid);
    EXPECT_EQ(media::CheckIfJPGFileSizeIsValid(Write("large", captures::OwnJpeg(8192, 8193)), isValid), 1);
    EXPECT_FALSE(isValid);
    EXPECT_EQ(media::CheckIfJPGFileSizeIsValid(Write("empty", ""), isValid), 1);
    EXPECT_FALSE(isValid);
}

TEST_F(OwnershipSniffer, FindsTheMovieBehindFiveGigabytes) {
    constexpr uint64_t kHole = 5'000'000'000;
    const std::string path =
        Write("hole.mp4", captures::FileType() + samples::U32(1) + "mdat" + samples::U64(kHole + 16));
    fs::resize_file(path, fs::file_size(path) + kHole);
    std::ofstream(path, std::ios::binary | std::ios::app)
        << captures::Movie(captures::Block("Ovirastream SDK", R"({"HighlightName":"far"})"));
    media::SniffResult result;
    EXPECT_EQ(media::SniffFile(path, result), 1);
    EXPECT_TRUE(result.isOwn);
    EXPECT_EQ(result.highlightName, "far");
}

}  // namespace
