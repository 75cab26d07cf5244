// The folders of the gallery that have to be watched and read.
#pragma once

#include <algorithm>
#include <deque>
#include <string>
#include <unordered_set>
#include <utility>

namespace watcher {

struct FolderJob {
    std::string folder;
    bool silent = false;
    bool deep = true;  // with all folders in it, not only the new ones

    bool IsWhole() const { return deep && !silent; }
};

class FolderJobs {
  public:
    // A second whole job for a folder is not taken: the first one finds the same.
    void Push(FolderJob job) {
        if (job.IsWhole() && !whole_.insert(job.folder).second) return;
        jobs_.push_back(std::move(job));
    }
    // Removes the silent jobs for these folders: what is there is known already.
    void DropSilent(const std::unordered_set<std::string>& folders) {
        const auto isKnown = [&](const FolderJob& job) {
            return job.silent && folders.count(job.folder) > 0;
        };
        jobs_.erase(std::remove_if(jobs_.begin(), jobs_.end(), isKnown), jobs_.end());
    }
    // There must be one.
    FolderJob Pop() {
        FolderJob job = std::move(jobs_.front());
        jobs_.pop_front();
        if (job.IsWhole()) whole_.erase(job.folder);
        return job;
    }
    void Clear() {
        jobs_.clear();
        whole_.clear();
    }
    bool IsEmpty() const { return jobs_.empty(); }

  private:
    std::deque<FolderJob> jobs_;
    std::unordered_set<std::string> whole_;  // the folders of whole jobs
};

}  // namespace watcher
