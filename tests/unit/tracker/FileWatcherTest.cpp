#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "plugin-modules/Gallery/src/watcher/linux/Inotify.h"
#include "tests/support/DescriptorLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

// What a listener knows of the files, and what it was told. Outlives the watchers that fill it.
class Told {
  public:
    void Track(const std::string& path) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return !held_; });
        if (!fs::is_directory(path)) files_.insert(path);
        calls_.push_back("+" + path);
        changed_.notify_all();
    }
    void Untrack(const std::string& path) {
        std::lock_guard<std::mutex> lock(mutex_);
        files_.erase(path);
        files_.erase(files_.lower_bound(path + "/"), files_.lower_bound(path + "0"));
        calls_.push_back("-" + path);
        changed_.notify_all();
    }
    void Disturbed(const std::string& path) {
        std::lock_guard<std::mutex> lock(mutex_);
        calls_.push_back("~" + path);
        changed_.notify_all();
    }
    void Forget() {
        std::lock_guard<std::mutex> lock(mutex_);
        calls_.clear();
    }
    void Hold(bool held) {
        std::lock_guard<std::mutex> lock(mutex_);
        held_ = held;
        changed_.notify_all();
    }

    int Count(const std::string& call) const {
        const std::vector<std::string> calls = Calls();
        return static_cast<int>(std::count(calls.begin(), calls.end(), call));
    }
    bool WaitForCall(const std::string& call) {
        return Wait([&] { return std::count(calls_.begin(), calls_.end(), call) > 0; });
    }
    bool WaitForFiles(const std::set<std::string>& files) {
        return Wait([&] { return files_ == files; });
    }
    std::vector<std::string> Calls() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return calls_;
    }

  private:
    bool Wait(const std::function<bool()>& reached) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(30), reached);
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool held_ = false;
    std::vector<std::string> calls_;
    std::set<std::string> files_;
};

struct Callback : IFileWatcherCallback {
    explicit Callback(Told& to) : told(to) {}
    void Track(std::string path, bool) override { told.Track(path); }
    void Untrack(std::string path) override { told.Untrack(path); }
    void Disturbed(std::string path) override { told.Disturbed(path); }
    Told& told;
};

// The parameter: whether by looking at folders alone.
class FileWatcherTest : public testing::TestWithParam<bool> {
  protected:
    FileWatcherTest() {
        options_.gallery = folder_.MakeFolder("Videos/Gallery");
        options_.window = options_.settle = options_.pollInterval = milliseconds(20);
        options_.startLimit = std::chrono::seconds(30);
        options_.polling = GetParam();
    }

    void Watch(const GalleryWalk& walk = {}) {
        watcher_ = CreateFileWatcher(folder_ / "Videos", std::make_unique<Callback>(told_), options_, walk);
    }
    std::string At(const std::string& name) const { return folder_ / ("Videos/Gallery/" + name); }
    std::string Write(const std::string& name, const std::string& bytes = "x") const {
        return folder_.Write("Videos/Gallery/" + name, bytes);
    }
    // Returns when all that was done before has been told.
    void Sync() {
        const std::string name = "sync" + std::to_string(++syncs_);
        EXPECT_TRUE(told_.WaitForCall("+" + Write(name)));
        fs::remove(At(name));
        EXPECT_TRUE(told_.WaitForCall("-" + At(name)));
    }

    TempFolder folder_;
    LogCapture log_;
    WatcherOptions options_;
    Told told_;
    std::unique_ptr<IFileWatcher> watcher_;
    int syncs_ = 0;
};

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

INSTANTIATE_TEST_SUITE_P(By, FileWatcherTest, testing::Bool(),
                         [](const auto& by) { return by.param ? "Polling" : "Events"; });

class EventWatcherTest : public FileWatcherTest {};
INSTANTIATE_TEST_SUITE_P(By, EventWatcherTest, testing::Values(false),
                         [](const auto&) { return std::string("Events"); });

TEST_P(FileWatcherTest, WhatIsThereIsKnown) {
    const std::string old = Write("Game/old.png");
    Watch();
    fs::permissions(old, fs::perms::owner_read);
    const std::string added = Write("Game/new.png");
    EXPECT_TRUE(told_.WaitForCall("+" + added));
    Sync();
    EXPECT_EQ(told_.Count("+" + old) + told_.Count("-" + old), 0);
    EXPECT_EQ(told_.Count("+" + added), 1);
    Write("Game/new.png", "longer");
    Sync();
    EXPECT_EQ(told_.Count("+" + added), 2);
}

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
