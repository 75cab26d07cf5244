// Paths whose changes the tracker ignores while the product itself works on them.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "common/threads/Mutex.h"

// Any thread.
class IgnoreList {
  public:
    void AddToIgnoreList(const std::vector<std::string>& paths) EXCLUDES(mutex_) {
        KXP::MutexLock lock(mutex_);
        paths_.insert(paths.begin(), paths.end());
    }
    // Adds all or none: returns false if one of them is there already.
    bool AddToIgnoreListIfNone(const std::vector<std::string>& paths) EXCLUDES(mutex_) {
        KXP::MutexLock lock(mutex_);
        for (const std::string& path : paths)
            if (paths_.count(path) > 0) return false;
        paths_.insert(paths.begin(), paths.end());
        return true;
    }
    // Removes each path, however often it was added.
    void RemoveFromIgnoreList(const std::vector<std::string>& paths) EXCLUDES(mutex_) {
        KXP::MutexLock lock(mutex_);
        for (const std::string& path : paths)
            paths_.erase(path);
    }
    bool Has(const std::string& path) const EXCLUDES(mutex_) {
        KXP::MutexLock lock(mutex_);
        return paths_.count(path) > 0;
    }

  private:
    mutable KXP::Mutex mutex_;
    std::set<std::string> paths_ GUARDED_BY(mutex_);
};
