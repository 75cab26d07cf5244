// Files and folders, and where the user keeps them.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "common/product/Profile.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryHome.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;

unsigned ModeOf(const std::string& path) {
    return static_cast<unsigned>(fs::status(path).permissions());
}

class FileUtilTest : public testing::Test {
  protected:
    uint32_t Copy(const std::string& from, const std::string& to, bool cancelled = false) {
        return static_cast<uint32_t>(FileCopyNew(from, folder_ / to, cancelled));
    }
    // Whatever a failed copy left, hidden files too, makes this more.
    long Entries() const {
        return std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator());
    }

    const TempFolder folder_;
    const LogCapture log_;
};

TEST_F(FileUtilTest, NothingIsReplacedByANewFile) {
    const std::string source = folder_.Write("a", "new");
    ASSERT_EQ(chmod(source.c_str(), 0640), 0);
    folder_.Write("file", "old");
    folder_.MakeFolder("folder");
    fs::create_symlink(folder_ / "nowhere", folder_ / "link");
    for (const char* taken : {"file", "folder", "link"}) {
        EXPECT_EQ(Copy(source, taken), 0x80004005u) << taken;
        EXPECT_EQ(static_cast<uint32_t>(FileMoveNew(source, folder_ / taken)), 0x80004005u) << taken;
    }
    EXPECT_EQ(Entries(), 4);
    EXPECT_EQ(folder_.Read("file"), "old");
    EXPECT_EQ(Copy(source, "copy"), 0u);
    EXPECT_EQ(folder_.Read("copy"), "new");
    EXPECT_EQ(ModeOf(folder_ / "copy"), 0640u);
    EXPECT_EQ(FileMoveNew(source, folder_ / "moved"), 0);
    EXPECT_EQ(Entries(), 5);
}

TEST_F(FileUtilTest, NothingStaysOfACopyThatEndsEarly) {
    const std::string source = folder_.Write("a", std::string(3 << 20, 'n'));
    EXPECT_EQ(Copy(source, "b", true), 0x80004004u);
    {
        const FileSizeLimit fullDisk(2 << 20);
        EXPECT_EQ(Copy(source, "b"), 0x80004005u);
    }
    EXPECT_EQ(Entries(), 1);
    EXPECT_EQ(Copy(source, "b"), 0u);
    EXPECT_EQ(folder_.Read("b"), folder_.Read("a"));
    ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    for (const std::string& bad : {folder_ / "absent", folder_ / "pipe", folder_.path()})
        EXPECT_EQ(Copy(bad, "c"), 0x80004005u) << bad;
    EXPECT_FALSE(folder_.Has("c"));
}

TEST_F(FileUtilTest, DeleteRemovesTheLinkAndLeavesItsTargetAlone) {
    const std::string target = folder_.Write("target", "x");
    ASSERT_EQ(chmod(target.c_str(), 0400), 0);
    fs::create_symlink(target, folder_ / "link");
    EXPECT_EQ(FileDelete(folder_ / "link", true), 0);
    EXPECT_FALSE(folder_.Has("link"));
    EXPECT_EQ(ModeOf(target), 0400u);
    FileAttrNormal(target);
    EXPECT_EQ(ModeOf(target), 0776u);
    EXPECT_EQ(FileDelete(target, false), 0);
    EXPECT_EQ(static_cast<uint32_t>(FileDelete(target, true)), 0x80004005u);
    EXPECT_TRUE(log_.HasLine(1, "Failed to delete file " + target + ": 0x00000002"));
}

TEST_F(FileUtilTest, FoldersAreMadePrivateAndCompared) {
    EXPECT_EQ(CreateDirectoryPath({folder_.path() + "//a/", "b/c", "d"}), folder_ / "a/b/c/d");
    EXPECT_EQ(ModeOf(folder_ / "a"), 0700u);
    EXPECT_TRUE(PathIsAbsolute("relative/path"));
    fs::create_symlink(folder_ / "a", folder_ / "link");
    EXPECT_TRUE(SamePath(folder_ / "a/../link/.", folder_ / "a"));
    EXPECT_TRUE(SamePath(folder_ / "no", folder_ / "nowhere"));
    EXPECT_FALSE(SamePath(folder_ / "a", folder_ / "no"));
}

TEST(Profile, MoviesByTheUsersOwnFile) {
    const TemporaryHome home;
    const auto movies = [&](const std::string& userDirs) {
        home.folder().Write("config/user-dirs.dirs", userDirs);
        return GetSpecialDirectory(SD_MOVIES);
    };
    EXPECT_EQ(movies("# c\nXDG_MUSIC_DIR=\"$HOME/M\"\nXDG_VIDEOS_DIR=\"$HOME/My \\\"Films\\\"/\"\n"),
              home / "My \"Films\"");
    EXPECT_EQ(movies("XDG_VIDEOS_DIR=\"/one\"\n  XDG_VIDEOS_DIR=\"/two\"\n"), "/two");
    for (const char* bad : {"XDG_VIDEOS_DIR=\"relative\"", "XDG_VIDEOS_DIR=/bare", "XDG_VIDEOS_DIR=\"/open",
                            "XDG_VIDEOS_DIR=\"$HOMER/x\"", "XDG_VIDEOS_DIR=\"$HOME", "XDG_VIDEOS_DIR=\"/a\\"})
        EXPECT_EQ(movies(bad), home / "Videos") << bad;
}

}  // namespace
}  // namespace KXP
