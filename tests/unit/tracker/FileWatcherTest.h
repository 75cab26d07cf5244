// What a watcher is tested with.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace fs = std::filesystem;
using std::chrono::milliseconds;

// What a listener knows of the files, and what it was told. Outlives the watchers that fill it.
class Told {
  public:
    explicit Told(bool looksIntoFolders) : looksIntoFolders_(looksIntoFolders) {}

    void Track(const std::string& path) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return !held_; });
        if (!fs::is_directory(path)) files_.insert(path);
        if (looksIntoFolders_ && fs::is_directory(path)) Enter(path);
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
    void Enter(const std::string& folder) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
            if (entry.is_regular_file() && !entry.is_symlink()) files_.insert(entry.path());
    }
    bool Wait(const std::function<bool()>& reached) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(30), reached);
    }

    const bool looksIntoFolders_;
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

struct WayToWatch {
    const char* name;
    bool polling = false;
    // A file may be reported again, and what is in a folder that appears is the listener's to find.
    bool plain = false;
};
// What the watcher under test has.
std::vector<WayToWatch> WaysToWatch();

inline std::string NameOfWay(const testing::TestParamInfo<WayToWatch>& way) {
    return way.param.name;
}

class FileWatcherTest : public testing::TestWithParam<WayToWatch> {
  protected:
    FileWatcherTest() {
        options_.gallery = folder_.MakeFolder("Videos/Gallery");
        options_.window = options_.settle = options_.pollInterval = milliseconds(20);
        options_.startLimit = std::chrono::seconds(30);
        options_.polling = GetParam().polling;
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
    Told told_{GetParam().plain};
    std::unique_ptr<IFileWatcher> watcher_;
    int syncs_ = 0;
};
