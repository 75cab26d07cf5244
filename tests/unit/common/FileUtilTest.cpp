#include <gtest/gtest.h>
#include <sys/stat.h>

#include "common/FileUtil.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;

unsigned ModeOf(const std::string& path) {
    return static_cast<unsigned>(fs::status(path).permissions());
}

class FileUtilTest : public testing::Test {
  protected:
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
    const long before = Entries();
    for (const char* taken : {"file", "folder", "link"}) {
        EXPECT_EQ(static_cast<uint32_t>(FileCopyNew(source, folder_ / taken, false)), 0x80004005u) << taken;
        EXPECT_EQ(static_cast<uint32_t>(FileMoveNew(source, folder_ / taken)), 0x80004005u) << taken;
    }
    EXPECT_EQ(Entries(), before);
    EXPECT_EQ(folder_.Read("file"), "old");
    EXPECT_EQ(FileCopyNew(source, folder_ / "copy", false), 0);
    EXPECT_EQ(folder_.Read("copy"), "new");
    EXPECT_EQ(ModeOf(folder_ / "copy"), 0640u);
    EXPECT_EQ(FileMoveNew(source, folder_ / "moved"), 0);
    EXPECT_EQ(Entries(), before + 1);
}

TEST_F(FileUtilTest, NothingStaysOfACopyThatEndsEarly) {
    const std::string source = folder_.Write("a", std::string(3 << 20, 'n'));
    EXPECT_EQ(static_cast<uint32_t>(FileCopyNew(source, folder_ / "b", true)), 0x80004004u);
    EXPECT_EQ(Entries(), 1);
    {
        const FileSizeLimit fullDisk(2 << 20);
        EXPECT_EQ(static_cast<uint32_t>(FileCopyNew(source, folder_ / "b", false)), 0x80004005u);
    }
    EXPECT_EQ(Entries(), 1);
    EXPECT_EQ(FileCopyNew(source, folder_ / "b", false), 0);
    EXPECT_EQ(folder_.Read("b"), folder_.Read("a"));
    ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    for (const std::string& bad : {folder_ / "absent", folder_ / "pipe", folder_.path()})
        EXPECT_EQ(static_cast<uint32_t>(FileCopyNew(bad, folder_ / "c", false)), 0x80004005u) << bad;
    EXPECT_FALSE(folder_.Has("c"));
}

TEST_F(FileUtilTest, DeleteRemovesTheLinkAndLeavesItsTargetAlone) {
    const std::string target = folder_.Write("target", "x");
    ASSERT_EQ(chmod(target.c_str(), 0400), 0);
    fs::create_symlink(target, folder_ / "link");
    FileAttrNormal(folder_ / "link");
    EXPECT_EQ(FileDelete(folder_ / "link", true), 0);
    EXPECT_FALSE(folder_.Has("link"));
    EXPECT_EQ(ModeOf(target), 0400u);
    FileAttrNormal(target);
    EXPECT_EQ(ModeOf(target), 0776u);
    EXPECT_EQ(FileDelete(target, false), 0);
    EXPECT_EQ(static_cast<uint32_t>(FileDelete(target, true)), 0x80004005u);
    EXPECT_TRUE(log_.HasLine(1, "Failed to delete file " + target + ": 0x00000002"));
}

}  // namespace
}  // namespace KXP
