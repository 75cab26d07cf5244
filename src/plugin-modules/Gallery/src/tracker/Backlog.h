// What the record may lack: changes that wait to be tracked, and places that could not be looked at. It also
// remembers files that were inspected and refused, which the record lacks rightly.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>

#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/tracker/record/FileStamp.h"

// Any thread. Its mutex may be taken under the tracker's.
class Backlog {
  public:
    void Begin() EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        ++waiting_;
    }
    void End() EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        if (--waiting_ == 0) ended_.NotifyAll();
    }
    // A rebuild ends after its last file: then the settings say that it is complete.
    void BeginRebuild() EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        ++rebuilds_;
    }
    void EndRebuild() EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        if (--rebuilds_ == 0) ended_.NotifyAll();
    }
    // Waits until nothing waits to be tracked and, if asked to, no rebuild to end; at most until `until`.
    void Await(std::chrono::steady_clock::time_point until, bool rebuilds) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        while ((waiting_ > 0 || (rebuilds && rebuilds_ > 0)) && std::chrono::steady_clock::now() < until)
            ended_.WaitUntil(mutex_, until);
    }
    bool IsEmpty() const EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        return waiting_ == 0 && failed_.empty();
    }

    void NoteRefused(const std::string& path, const FileStamp& stamp) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        if (refused_.size() >= kMostRefused) refused_.clear();
        refused_[path] = stamp;
    }
    bool WasRefused(const std::string& path, const FileStamp& stamp) const EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        const auto found = refused_.find(path);
        return found != refused_.end() && found->second == stamp;
    }

    // When to look at a place again that could not be looked at.
    struct NextLook {
        std::chrono::seconds after;
        bool first = false;
    };
    // No value if that has been arranged before.
    std::optional<NextLook> NoteFailed(const std::string& path) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        Failed& failed = failed_[path];
        if (failed.arranged) return {};
        failed.arranged = true;
        const size_t look = failed.looks++;
        return NextLook{kLookAgain[std::min(look, kLookAgain.size() - 1)], look == 0};
    }
    void BeginLook(const std::string& path) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        const auto found = failed_.find(path);
        if (found != failed_.end()) found->second.arranged = false;
    }
    void ClearFailed(const std::string& path) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        failed_.erase(path);
    }

  private:
    static constexpr size_t kMostRefused = 4096;
    static constexpr std::array<std::chrono::seconds, 3> kLookAgain = {
        std::chrono::seconds(5), std::chrono::seconds(30), std::chrono::seconds(60)};

    struct Failed {
        size_t looks = 0;
        bool arranged = false;  // for the next look
    };

    mutable KXP::Mutex mutex_;
    KXP::CondVar ended_;
    size_t waiting_ GUARDED_BY(mutex_) = 0;  // entries of the tracker's queue, for paths
    size_t rebuilds_ GUARDED_BY(mutex_) = 0;
    std::map<std::string, FileStamp> refused_ GUARDED_BY(mutex_);  // lately
    std::map<std::string, Failed> failed_ GUARDED_BY(mutex_);
};
