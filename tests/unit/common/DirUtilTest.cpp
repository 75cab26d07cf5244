#include <algorithm>
#include <cstring>

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
    EXPECT_EQ(Sorted(EnumFiles(folder_.path())),
              (Names{".mp4", "CLIP.MP4", "clip.mp4", "pipe", "toFile.mp4"}));
    EXPECT_EQ(log_.Lines().size(), 1u);
    EXPECT_EQ(Sorted(EnumFilesWithExtension(folder_.path(), "mp4")), (Names{"clip.mp4", "toFile.mp4"}));
    EXPECT_EQ(Sorted(EnumDirectories(folder_.path())), (Names{"sub.mp4", "toFolder"}));
}

TEST_F(DirUtilTest, IsDirectoryLooksLinksUpInTheCurrentFolder) {
    dirent entry{};
    entry.d_type = DT_LNK;
    strcpy(entry.d_name, "..");
    EXPECT_TRUE(IsDirectory(&entry));
    strcpy(entry.d_name, "link-to-folder");
    EXPECT_FALSE(IsDirectory(&entry));
    EXPECT_TRUE(log_.HasLine(2, "KXP::IsDirectory stat failed for link-to-folder with errno 2"));
}

TEST_F(DirUtilTest, CopyTakes501EntriesAlongAPath) {
    // Two folders of 260 are not too many: what one of them counts is forgotten above it.
    for (int i = 0; i < 520; ++i)
        folder_.Write("tree/" + std::to_string(i / 260) + "/" + std::to_string(i), "x");
    EXPECT_TRUE(DirectoryCopy(folder_ / "tree", folder_ / "tree2", 0));
    for (int i = 260; i < 501; ++i)
        folder_.Write("tree/0/" + std::to_string(i), "x");
    EXPECT_TRUE(DirectoryCopy(folder_ / "tree/0", folder_ / "all", 0));
    EXPECT_EQ(GetFilesInDir(folder_ / "all").size(), 501u);
    folder_.Write("tree/0/one-more", "x");
    EXPECT_FALSE(DirectoryCopy(folder_ / "tree/0", folder_ / "part", 0));
    EXPECT_EQ(GetFilesInDir(folder_ / "part").size(), 501u);
    EXPECT_TRUE(log_.HasLine(1, "Too many files to handle [502]"));
}

TEST_F(DirUtilTest, CopyNeverFollowsLinksToFoldersNorCopiesItself) {
    folder_.Write("src/file", "new");
    fs::create_symlink("file", folder_ / "src/toFile");
    fs::create_directory_symlink("..", folder_ / "src/up");
    fs::create_symlink("nowhere", folder_ / "src/dangling");
    ASSERT_EQ(mkfifo((folder_ / "src/pipe").c_str(), 0600), 0);
    folder_.MakeFolder("dst");
    fs::create_symlink("../src/file", folder_ / "dst/file");
    EXPECT_TRUE(DirectoryCopy(folder_ / "src", folder_ / "dst", 0));
    EXPECT_EQ(Sorted(GetFilesInDir(folder_ / "dst")), (Names{"file", "toFile"}));
    EXPECT_EQ(folder_.Read("dst/toFile"), "new");
    EXPECT_EQ(folder_.Read("src/file"), "new") << "a copy onto itself would empty it";
    EXPECT_FALSE(DirectoryCopy(folder_ / "src", folder_ / "src", 0));
    EXPECT_FALSE(DirectoryCopy(folder_ / "src", folder_ / "src/inside/deep", 0));
}

TEST_F(DirUtilTest, DeletingATreeLeavesWhatLinksLeadTo) {
    const std::string kept = folder_.Write("outside/kept", "x");
    folder_.Write("tree/a/b/file", "x");
    fs::create_directory_symlink(folder_ / "outside", folder_ / "tree/a/link");
    fs::create_symlink(kept, folder_ / "tree/toFile");
    for (const std::string& path : {kept, folder_ / "tree/a/b"})
        ASSERT_EQ(chmod(path.c_str(), 0500), 0);
    DirectoryDeleteRecursive(folder_ / "tree");
    EXPECT_FALSE(folder_.Has("tree"));
    fs::create_directory_symlink(folder_ / "outside", folder_ / "tree");
    DirectoryDeleteRecursive(folder_ / "tree");
    EXPECT_FALSE(folder_.Has("tree"));
    EXPECT_EQ(ModeOf(kept), 0500u);
}

}  // namespace
}  // namespace KXP
