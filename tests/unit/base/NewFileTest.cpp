#include <cerrno>

#include <gtest/gtest.h>

#include "base/NewFile.h"
#include "base/ReadWrite.h"
#include "tests/support/TempFolder.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;

class NewFileTest : public testing::Test {
  protected:
    // Hidden files count.
    long Entries() const {
        return std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator());
    }

    const TempFolder folder_;
};

TEST_F(NewFileTest, AppearsWholeInItsPlaceAlone) {
    folder_.Write("target", "target");
    for (const Durability durability : {Durability::None, Durability::Content, Durability::ContentAndName}) {
        fs::create_symlink("target", folder_ / "place");
        NewFile file(folder_ / "place");
        ASSERT_TRUE(WriteFully(file.descriptor(), "whole"));
        EXPECT_EQ(folder_.Read("place"), "target") << "before it is put there";
        ASSERT_TRUE(file.PutOver(durability));
        EXPECT_EQ(folder_.Read("target"), "target");
        EXPECT_EQ(fs::symlink_status(folder_ / "place").type(), fs::file_type::regular);
        EXPECT_EQ(fs::status(folder_ / "place").permissions(), fs::perms(0600));
        EXPECT_EQ(folder_.Read("place"), "whole");
        EXPECT_EQ(Entries(), 2);
        fs::remove(folder_ / "place");
    }
}

TEST_F(NewFileTest, NothingStaysOfOneThatIsNotPut) {
    fs::create_symlink("nowhere", folder_ / "link");
    { const NewFile dropped(folder_ / "place"); }
    {
        NewFile taken(folder_ / "link");
        EXPECT_FALSE(taken.PutNew());
        EXPECT_EQ(errno, EEXIST);
    }
    EXPECT_EQ(Entries(), 1);
    for (const std::string& bad : {folder_ / "no/place", folder_ / "", folder_ / std::string("a\0b", 3)})
        EXPECT_FALSE(NewFile(bad).IsOpen()) << bad;
}

TEST_F(NewFileTest, StaysInTheFolderThatWasOpened) {
    NewFile file(folder_.MakeFolder("before") + "/place", 0640);
    fs::rename(folder_ / "before", folder_ / "after");
    folder_.MakeFolder("before");
    ASSERT_TRUE(file.PutNew());
    EXPECT_TRUE(folder_.Has("after/place"));
    EXPECT_FALSE(folder_.Has("before/place"));
}

}  // namespace
}  // namespace KXP
