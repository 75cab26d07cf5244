#include <cerrno>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

#include "base/NewFile.h"
#include "base/PartFiles.h"
#include "base/ReadWrite.h"
#include "tests/support/TemporaryHome.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;

class NewFileTest : public testing::Test {
  protected:
    // Hidden files count.
    long Entries() const { return CountIn(folder_.path()); }
    long Notes() const { return CountIn(share_); }
    static long CountIn(const std::string& folder) {
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    }

    const TempFolder folder_;
    TemporaryHome home_;
    const std::string share_ = home_.folder().MakeFolder("data/ZORVEX/OvirastreamX/Share");
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
    { const NewFile dropped(folder_ / "place"); }
    EXPECT_EQ(Entries(), 0);
    for (const std::string& bad : {folder_ / "no/place", folder_ / "", folder_ / std::string("a\0b", 3)})
        EXPECT_FALSE(NewFile(bad).IsOpen()) << bad;
}

TEST_F(NewFileTest, ALinkReplacesNothing) {
    fs::create_symlink("nowhere", folder_ / "place");
    NewFile file(folder_ / "place");
    EXPECT_FALSE(file.LinkNew("place"));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_TRUE(file.LinkNew("other"));
    EXPECT_EQ(Entries(), 2);
}

TEST_F(NewFileTest, StaysInTheFolderThatWasOpened) {
    NewFile file(folder_.MakeFolder("before") + "/place", 0640);
    fs::rename(folder_ / "before", folder_ / "after");
    folder_.MakeFolder("before");
    ASSERT_TRUE(file.PutNew());
    EXPECT_TRUE(folder_.Has("after/place"));
    EXPECT_FALSE(folder_.Has("before/place"));
}

TEST_F(NewFileTest, WhatAKilledProcessLeavesIsRemoved) {
    const std::string taken = folder_ / "link";
    fs::create_symlink("nowhere", taken);
    const pid_t child = fork();
    if (child == 0) {
        NewFile file(taken);
        _exit(file.PutNew());  // fails, and the file has a hidden name until it is destroyed
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    {
        NewFile alive(taken);
        ASSERT_FALSE(alive.PutNew());
        EXPECT_EQ(errno, EEXIST);
        EXPECT_EQ(Entries(), 3);
        EXPECT_EQ(RemoveAbandonedParts(), 1);
        EXPECT_EQ(Entries(), 2);
    }
    EXPECT_EQ(Entries(), 1);
    EXPECT_EQ(Notes(), 0);
}

TEST_F(NewFileTest, ANoteRemovesAPartAloneAndWaitsForItsDrive) {
    const std::string part = folder_ / ".0123456789abcdef.part";
    const std::string note = share_ + "/NewFile_edited";
    const auto settle = [&](const std::string& text) {
        std::ofstream(note) << text;
        return RemoveAbandonedParts();
    };
    fs::create_symlink("nowhere", part);
    for (const std::string& text : {std::string("\n"), part, part + "\n", note + "\n",
                                    folder_.Write(".0123456789abcdeg.part", "") + "\n"}) {
        EXPECT_EQ(settle(text), 0) << text;
        EXPECT_EQ(Notes(), 0) << text;
    }
    EXPECT_EQ(Entries(), 2);
    const std::string away = home_ / "drive/.0123456789abcdef.part";
    EXPECT_EQ(settle(away + "\n"), 0);
    EXPECT_EQ(Notes(), 1);
    home_.folder().Write("drive/.0123456789abcdef.part", "half");
    EXPECT_EQ(RemoveAbandonedParts(), 1);
    fs::remove(home_ / "drive");
    EXPECT_EQ(settle(away + "\n"), 0);
    const utimbuf longAgo{0, 0};
    ASSERT_EQ(utime(note.c_str(), &longAgo), 0);
    EXPECT_EQ(RemoveAbandonedParts(), 0);
    EXPECT_EQ(Notes(), 0);
}

}  // namespace
}  // namespace KXP
