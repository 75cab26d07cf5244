// Counts the changes that wait to be tracked, and remembers files that were inspected and refused. Both are
// needed to decide whether the record is complete.
#pragma once

#include <atomic>
#include <cstddef>
#include <set>
#include <string>

#include "common/threads/Mutex.h"

// Any thread. Its mutex may be taken under the tracker's.
class Backlog {
  public:
    void Begin() { ++entries_; }
    void End() { --entries_; }
    bool IsEmpty() const { return entries_ == 0; }

    void NoteRefused(const std::string& path) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        if (refused_.size() >= kMostRefused) refused_.clear();
        refused_.insert(path);
    }
    bool WasRefused(const std::string& path) const EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        return refused_.count(path) > 0;
    }

  private:
    static constexpr size_t kMostRefused = 4096;

    std::atomic<size_t> entries_{0};  // in the tracker's queue, for paths
    mutable KXP::Mutex mutex_;
    std::set<std::string> refused_ GUARDED_BY(mutex_);  // lately
};
