#include <algorithm>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "common/DirUtil.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"
#include "tests/unit/common/Thrown.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

Names Sorted(Names names) {
    std::sort(names.begin(), names.end());
    return names;
}

unsigned ModeOf(const std::string& path) {
    return static_cast<unsigned>(fs::symlink_status(path).permissions());
}

class DirUtilTest : public testing::Test {
  protected:
    const TempFolder folder_;
    const LogCapture log_;
};

TEST_F(DirUtilTest, CreateDirectoryPathMakesPrivateFolders) {
    EXPECT_EQ(CreateDirectoryPath({folder_.path() + "//a/", "b/c", "d"}), folder_ / "a/b/c/d");
    EXPECT_EQ(ModeOf(folder_ / "a"), 0700u);
    const std::vector<std::string> belowFile = {folder_.Write("file", ""), "below"};
    EXPECT_EQ(Thrown([&] { CreateDirectoryPath(belowFile); }),
              "0x80004005[14]: ERROR: Unable to create folder");
}

TEST_F(DirUtilTest, EveryPathIsAbsoluteAndAllThatAreNowhereAreTheSame) {
    EXPECT_TRUE(PathIsAbsolute("relative/path"));
    fs::create_symlink(folder_.MakeFolder("a"), folder_ / "link");
    EXPECT_TRUE(SamePath(folder_ / "a/../link/.", folder_ / "a"));
    EXPECT_TRUE(SamePath(folder_ / "no", folder_ / "nowhere"));
    EXPECT_FALSE(SamePath(folder_ / "a", folder_ / "no"));
}

TEST_F(DirUtilTest, ListingsTakeHostileFolders) {
    for (const char* name : {"clip.mp4", "CLIP.MP4", ".mp4", "b\xFF.mp4"})
        folder_.Write(name, "");
    folder_.MakeFolder("sub.mp4");
    ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    fs::create_symlink("clip.mp4", folder_ / "toFile.mp4");
    fs::create_symlink("sub.mp4", folder_ / "toFolder");
    fs::create_symlink("nowhere", folder_ / "dangling.mp4");
    EXPECT_EQ(Sorted(EnumFilesWithExtension(folder_.path(), "mp4")), (Names{"clip.mp4", "toFile.mp4"}));
    EXPECT_EQ(log_.Lines().size(), 1u);
    EXPECT_EQ(Sorted(EnumDirectories(folder_.path())), (Names{"sub.mp4", "toFolder"}));
}

}  // namespace
}  // namespace KXP
