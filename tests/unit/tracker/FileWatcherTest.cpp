#include "tests/unit/tracker/FileWatcherTest.h"

#include <cstddef>
#include <cstring>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include "plugin-modules/Gallery/src/watcher/linux/Inotify.h"
#include "tests/support/DescriptorLimit.h"

constexpr WayToWatch kEvents{"Events"};

std::vector<WayToWatch> WaysToWatch() {
    return {kEvents, {"Polling", true}};
}

namespace {

TEST_P(FileWatcherTest, KnowsWhetherMoreIsToCome) {
    options_.polling = false;  // looking now and then cannot tell
    options_.window = milliseconds(200);
    options_.settle = std::chrono::seconds(30);
    Watch();
    const auto unreported = [this](size_t most = 1) {
        std::optional<UnreportedPaths> paths;
        while (!(paths = watcher_->Unreported(most)))
            std::this_thread::yield();
        return std::pair(paths->changed, paths->incomplete);
    };
    using Paths = std::vector<std::string>;
    EXPECT_EQ(unreported(), std::pair(Paths(), Paths()));
    Write("a");
    EXPECT_EQ(unreported(), std::pair(Paths{At("a")}, Paths()));
    EXPECT_TRUE(told_.WaitForCall("+" + At("a")));
    std::ofstream open(At("b"));
    Write("c");
    EXPECT_TRUE(told_.WaitForCall("+" + At("c")));
    EXPECT_EQ(unreported(), std::pair(Paths(), Paths{At("b")}))
        << "it is being written, and was a moment ago";
    open.close();
    fs::remove(At("b"));
    EXPECT_TRUE(told_.WaitForCall("-" + At("b")));
    EXPECT_EQ(unreported(), std::pair(Paths(), Paths()));
}

class EventWatcherTest : public FileWatcherTest {};
INSTANTIATE_TEST_SUITE_P(By, EventWatcherTest, testing::Values(kEvents), NameOfWay);

TEST_P(FileWatcherTest, LearnsFromAWalkAndReadsTheRest) {
    const std::string shown = Write("Game/shown.png");
    const std::string unseen = Write(".hidden/unseen.png");
    std::string late;
    Watch([&](KXP::IFolderVisitor& visitor) {
        struct stat status {};
        visitor.Enter(options_.gallery);
        for (const char* name : {"Game", ".hidden"}) {
            stat(At(name).c_str(), &status);
            visitor.Found(name, false, status);
        }
        visitor.Leave(status);
        struct stat game {};
        stat(At("Game").c_str(), &game);
        visitor.Enter(At("Game"));
        stat(shown.c_str(), &status);
        visitor.Found("shown.png", false, status);
        late = Write("Game/late.png");
        visitor.Leave(game);
    });
    EXPECT_TRUE(told_.WaitForCall("+" + late));
    for (const std::string& path : {shown, unseen}) {
        EXPECT_EQ(told_.Count("+" + path), 0);
        fs::remove(path);
        EXPECT_TRUE(told_.WaitForCall("-" + path));
    }
}

// Each of these changes the time of an entry of the gallery's tree, or of the folder that the gallery lies
// in.
TEST_P(EventWatcherTest, WhateverChangesTimesIsTold) {
    const std::string file = Write("Game/a.png");
    Write(".hidden/old");
    Write("Game/\xfe/deep/old");
    folder_.MakeFolder("Videos/Other");
    const std::string beside = folder_ / "Videos/beside";
    Watch();
    std::ofstream kept(file, std::ios::app);
    std::ofstream created;
    const auto touch = [](const std::string& path) { utimensat(AT_FDCWD, path.c_str(), nullptr, 0); };
    const struct {
        std::string call;
        std::function<void()> change;
    } rows[] = {
        {"+" + file, [&] { touch(file); }},
        {"+" + file, [&] { fs::resize_file(file, 5); }},
        {"+" + file, [&] { kept << "more" << std::flush; }},
        {"~" + At("Game"), [&] { touch(At("Game")); }},
        {"~" + At("Game"), [&] { Write("Game/\xff"); }},
        {"~" + At("Game"), [&] { Write("Game/\xfe/deep/new"); }},
        {"~" + At("Game"), [&] { fs::remove_all(At("Game/\xfe")); }},
        {"~" + At("Game/pipe"), [&] { mkfifo(At("Game/pipe").c_str(), 0600); }},
        {"-" + At("Game/pipe"), [&] { fs::remove(At("Game/pipe")); }},
        {"~" + At(".hidden/soft"), [&] { fs::create_symlink(file, At(".hidden/soft")); }},
        {"~" + At("open"), [&] { created.open(At("open")); }},
        {"~" + options_.gallery, [&] { touch(options_.gallery); }},
        {"~" + folder_ / "Videos", [&] { touch(folder_ / "Videos"); }},
        {"+" + beside, [&] { folder_.Write("Videos/beside", "x"); }},
        {"-" + beside, [&] { fs::remove(beside); }},
    };
    for (const auto& row : rows) {
        told_.Forget();
        row.change();
        EXPECT_TRUE(told_.WaitForCall(row.call)) << &row - rows;
    }
    Sync();
    told_.Forget();
    fs::permissions(file, fs::perms::owner_read);
    folder_.Write("Videos/Other/not/followed", "x");
    Sync();
    EXPECT_EQ(told_.Count("+" + file) + told_.Count("+" + folder_ / "Videos/Other/not"), 0);
}

TEST_P(EventWatcherTest, FoldersThatCannotBeReadAreTriedAgain) {
    SKIP_WHERE_DESCRIPTORS_ARE_NEEDED();
    folder_.Write("Game/deep/a.png", "x");
    Watch();
    {
        // Folders are still watched, but not read.
        const DescriptorLimit none;
        fs::rename(folder_ / "Game", At("Game"));
        EXPECT_TRUE(told_.WaitForCall("+" + At("Game")));
        EXPECT_EQ(told_.Count("+" + At("Game/deep")), 0);
    }
    EXPECT_TRUE(told_.WaitForFiles({At("Game/deep/a.png")}));
    EXPECT_EQ(told_.Count("-" + At("Game")), 0);
}

TEST_P(EventWatcherTest, NothingIsLostWithTheKernelsQueue) {
    Write("Game/known.png");
    const std::string gone = Write("Game/gone.png");
    Watch();
    told_.Hold(true);
    EXPECT_TRUE(told_.Calls().empty());
    Write("Game/holds.png");
    // More than the queue of the kernel holds, with the thread held in the callback.
    size_t queue = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> queue;
    Write("Game/0");
    while (log_.Count("Calling Track for " + At("Game/holds.png")) == 0)
        std::this_thread::yield();
    for (size_t i = 0; i <= queue / 2; ++i)
        fs::rename(At("Game/" + std::to_string(i)), At("Game/" + std::to_string(i + 1)));
    fs::remove(gone);
    const std::string deep = Write("New/deep/a.png");
    told_.Hold(false);
    const std::string last = At("Game/" + std::to_string(queue / 2 + 1));
    EXPECT_TRUE(told_.WaitForFiles({At("Game/holds.png"), last, deep}));
    Sync();
    EXPECT_EQ(told_.Count("-" + gone), 1);
    EXPECT_EQ(told_.Count("+" + At("Game/known.png")), 0);
    EXPECT_EQ(told_.Count("+" + options_.gallery), 0);
    EXPECT_EQ(log_.Count("File events were lost"), 1);
}

TEST_P(EventWatcherTest, WithoutEnoughWatchesTheRestIsLookedAt) {
    Write("Game/deep/old.png");
    Write("Other/old.png");
    options_.maxWatches = 2;
    Watch();
    const std::string nested = Write("Game/deep/a.png");
    const std::string other = Write("Other/b.png");
    EXPECT_TRUE(told_.WaitForFiles({nested, other}));
    fs::remove_all(At("Game"));
    EXPECT_TRUE(told_.WaitForFiles({other}));
    EXPECT_EQ(log_.Count("No more watches"), 1);
}

TEST(KernelEvents, LengthsAreNotTrusted) {
    const auto next = [](uint32_t length, watcher::KernelEvent& event) {
        static char bytes[sizeof(inotify_event) + 16];
        std::memset(bytes, 'n', sizeof bytes);
        std::memcpy(bytes + offsetof(inotify_event, len), &length, sizeof length);
        std::string_view rest(bytes, sizeof bytes);
        const bool took = watcher::NextKernelEvent(rest, event);
        EXPECT_TRUE(!took || rest.size() == size_t{16} - length);
        return took;
    };
    watcher::KernelEvent event;
    EXPECT_TRUE(next(0, event));
    EXPECT_TRUE(event.name.empty());
    EXPECT_TRUE(next(16, event));
    EXPECT_EQ(event.name, std::string(16, 'n'));
    EXPECT_FALSE(next(17, event));
    EXPECT_FALSE(next(UINT32_MAX, event));
    std::string_view part("no head");
    EXPECT_FALSE(watcher::NextKernelEvent(part, event));
}

}  // namespace
