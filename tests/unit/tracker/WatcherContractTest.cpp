// What every watcher does.
#include "tests/unit/tracker/FileWatcherTest.h"

namespace {

INSTANTIATE_TEST_SUITE_P(By, FileWatcherTest, testing::ValuesIn(WaysToWatch()), NameOfWay);

TEST_P(FileWatcherTest, WhatIsThereIsKnown) {
    const std::string old = Write("Game/old.png");
    Watch();
    fs::permissions(old, fs::perms::owner_read);
    const std::string added = Write("Game/new.png");
    EXPECT_TRUE(told_.WaitForCall("+" + added));
    Sync();
    EXPECT_EQ(told_.Count("+" + old) + told_.Count("-" + old), 0);
    const auto once = [](int count) { return GetParam().plain ? count > 0 : count == 1; };
    EXPECT_TRUE(once(told_.Count("+" + added)));
    told_.Forget();
    Write("Game/new.png", "longer");
    Sync();
    EXPECT_TRUE(once(told_.Count("+" + added)));
}

// Who is told of a folder looks into it, and so knows of files that the watcher still waits for.
TEST_P(FileWatcherTest, YoungFilesGoWithAFolderThatIsReplaced) {
    options_.window = milliseconds(300);
    options_.settle = milliseconds(1500);
    folder_.Write("Game/a.png", "x");
    Watch();
    fs::rename(folder_ / "Game", At("Game"));
    EXPECT_TRUE(told_.WaitForCall("+" + At("Game")));
    fs::rename(At("Game"), folder_ / "away");
    fs::create_directory(At("Game"));
    EXPECT_TRUE(told_.WaitForCall("-" + At("Game/a.png")));
}

TEST_P(FileWatcherTest, GalleryGoesAndComesBack) {
    Watch();
    const std::string file = Write("Game/a.png");
    EXPECT_TRUE(told_.WaitForFiles({file}));
    fs::rename(options_.gallery, folder_ / "Videos/Renamed");
    EXPECT_TRUE(told_.WaitForCall("-" + options_.gallery));
    fs::rename(folder_ / "Videos/Renamed", options_.gallery);
    EXPECT_TRUE(told_.WaitForCall("+" + options_.gallery));
    EXPECT_TRUE(told_.WaitForFiles({file}));
    Sync();
    told_.Forget();
    fs::rename(options_.gallery, folder_ / "away");
    const std::string other = Write("Game/b.png");
    EXPECT_TRUE(told_.WaitForFiles({other}));
    const std::vector<std::string> calls = told_.Calls();
    const auto place = [&](const std::string& call) { return std::find(calls.begin(), calls.end(), call); };
    EXPECT_TRUE(told_.Count("-" + options_.gallery) > 0 || place("-" + file) < place("+" + options_.gallery))
        << "what went is told first";
}

TEST_P(FileWatcherTest, WatchedFolderGoesAndComesBack) {
    Watch();
    EXPECT_TRUE(told_.WaitForFiles({Write("Game/a.png")}));
    fs::rename(folder_ / "Videos", folder_ / "Elsewhere");
    EXPECT_TRUE(told_.WaitForFiles({}));
    EXPECT_EQ(told_.Count("-" + folder_ / "Videos"), 1);
    fs::remove(folder_ / "Elsewhere/Gallery/Game/a.png");
    folder_.Write("Elsewhere/Gallery/Game/b.png", "x");
    fs::rename(folder_ / "Elsewhere", folder_ / "Videos");
    EXPECT_TRUE(told_.WaitForFiles({At("Game/b.png")}));
    EXPECT_EQ(told_.Count("+" + folder_ / "Videos"), 1);
    Sync();
}

TEST_P(FileWatcherTest, LinksAndIllegibleNames) {
    folder_.Write("target/a.png", "x");
    fs::create_directory(At("Game"));
    Watch();
    fs::create_directory_symlink(folder_ / "target", At("Linked"));
    fs::create_symlink(folder_ / "target/a.png", At("Game/soft.png"));
    Write("Game/\xff.png");
    Write("Game/\xfe.png");
    fs::create_hard_link(folder_ / "target/a.png", At("Game/hard.png"));
    EXPECT_TRUE(told_.WaitForFiles({At("Game/hard.png")}));
    folder_.Write("target/b.png", "x");
    Sync();
    EXPECT_TRUE(told_.WaitForFiles({At("Game/hard.png")}));
    EXPECT_EQ(log_.Count("not UTF-8"), 1);
}

TEST_P(FileWatcherTest, EndsAtOnceWhileBusy) {
    for (int i = 0; i < 300; ++i)
        fs::create_directories(At("g" + std::to_string(i) + "/d"));
    options_.startLimit = milliseconds(0);
    options_.window = std::chrono::hours(1);
    options_.settle = std::chrono::hours(1);
    Watch();
    Write("g0/a.png");
    // Returns although the window stays open for an hour.
    watcher_.reset();
    const size_t calls = told_.Calls().size();
    Write("g0/b.png");
    EXPECT_EQ(told_.Calls().size(), calls);
}

}  // namespace
