#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/FileUtil.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;

mode_t ModeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

class FileUtilTest : public testing::Test {
  protected:
    const TempFolder folder_;
    const LogCapture log_;
};

TEST_F(FileUtilTest, CopyKeepsTheTailOfALongerFileAndTakesTheMode) {
    const std::string source = folder_.Write("a", std::string(3000, 'n'));
    const std::string destination = folder_.Write("b", std::string(5000, 'o'));
    ASSERT_EQ(chmod(source.c_str(), 0640), 0);
    EXPECT_EQ(FileCopy(source, destination), 0);
    EXPECT_EQ(folder_.Read("b"), std::string(3000, 'n') + std::string(2000, 'o'));
    EXPECT_EQ(ModeOf(destination), 0640u);
    EXPECT_EQ(FileCopy(source, folder_ / "new"), 0);
    EXPECT_EQ(folder_.Read("new"), std::string(3000, 'n'));
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(FileUtilTest, CopyRefusesWhatIsNoFile) {
    const std::string file = folder_.Write("a", "x");
    ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    for (const std::string& bad : {folder_ / "absent", folder_ / "pipe", folder_.path()})
        EXPECT_EQ(static_cast<uint32_t>(FileCopy(bad, folder_ / "b")), 0x80004005u) << bad;
    EXPECT_FALSE(folder_.Has("b"));
    EXPECT_TRUE(log_.HasLine(1, "FileCopy open source failed"));
    for (const std::string& bad : {folder_ / "no/b", folder_ / "pipe", folder_.path()})
        EXPECT_EQ(static_cast<uint32_t>(FileCopy(file, bad)), 0x80004005u) << bad;
    EXPECT_TRUE(log_.HasLine(1, "FileCopy open destination failed"));
}

TEST_F(FileUtilTest, DeleteRemovesTheLinkAndLeavesItsTargetAlone) {
    const std::string target = folder_.Write("target", "x");
    ASSERT_EQ(chmod(target.c_str(), 0400), 0);
    fs::create_symlink(target, folder_ / "link");
    EXPECT_EQ(FileAttrNormal(folder_ / "link"), 0);
    EXPECT_EQ(FileDelete(folder_ / "link", true), 0);
    EXPECT_FALSE(folder_.Has("link"));
    EXPECT_EQ(ModeOf(target), 0400u);
    EXPECT_EQ(FileAttrNormal(target), 0);
    EXPECT_EQ(ModeOf(target), 0776u);
    EXPECT_EQ(FileDelete(target, false), 0);
    EXPECT_EQ(static_cast<uint32_t>(FileDelete(target, true)), 0x80004005u);
    EXPECT_TRUE(log_.HasLine(1, "Failed to delete file " + target + ": 0x00000002"));
}

TEST_F(FileUtilTest, MoveNeverCopies) {
    const std::string source = folder_.Write("a", "x");
    EXPECT_EQ(FileMove(source, folder_ / "b"), 0);
    EXPECT_EQ(static_cast<uint32_t>(FileMove(source, folder_ / "c")), 0x80004005u);
    EXPECT_TRUE(log_.HasLine(1, "Error 0x00000002 moving file " + source + " to " + (folder_ / "c")));
}

TEST_F(FileUtilTest, MigrateMovesOnceAndTheNewFileWins) {
    const std::string legacy = folder_ / "legacy";
    const std::string current = folder_ / "current";
    EXPECT_EQ(FileMigrate(legacy, legacy), 1);
    EXPECT_EQ(FileMigrate(legacy, current), 0);
    EXPECT_EQ(log_.Lines().size(), 1u);
    folder_.Write("legacy", "old");
    EXPECT_EQ(FileMigrate(legacy, current), 0);
    EXPECT_EQ(folder_.Read("current"), "old");
    EXPECT_TRUE(log_.HasLine(2, "Migration successful"));
    folder_.Write("legacy", "older");
    EXPECT_EQ(FileMigrate(legacy, current), 1);
    EXPECT_EQ(folder_.Read("current"), "old");
    EXPECT_FALSE(folder_.Has("legacy"));
    folder_.Write("legacy", "lost");
    EXPECT_EQ(static_cast<uint32_t>(FileMigrate(legacy, folder_ / "no/such")), 0x80004005u);
    EXPECT_FALSE(folder_.Has("legacy"));
    EXPECT_TRUE(log_.HasLine(1, "Failed to move legacy file to new location. Continuing without old data"));
}

TEST_F(FileUtilTest, SizesAndTimes) {
    int size = -1;
    EXPECT_EQ(FileSizeKB(folder_.Write("a", ""), size), 0);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(FileSizeKB(folder_.Write("a", std::string(1001, 'x')), size), 0);
    EXPECT_EQ(size, 2);
    fs::resize_file(folder_ / "a", uintmax_t{3} << 40);
    EXPECT_EQ(FileSizeKB(folder_ / "a", size), 0);
    EXPECT_EQ(size, 2147483647);
    EXPECT_EQ(static_cast<uint32_t>(FileSizeKB(folder_ / "absent", size)), 0x80070002u);
    EXPECT_EQ(size, 0);
    int64_t seconds = 0;
    const timespec times[] = {{5, 0}, {1234567890, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, (folder_ / "a").c_str(), times, 0), 0);
    EXPECT_EQ(FileTime(folder_ / "a", seconds), 0);
    EXPECT_EQ(seconds, 1234567890);
    EXPECT_EQ(static_cast<uint32_t>(FileTime(folder_ / "absent", seconds)), 0x80070002u);
    EXPECT_FALSE(FileExists(folder_.path()));
    EXPECT_TRUE(FileExists(folder_ / "a"));
}

}  // namespace
}  // namespace KXP
