// The folders that have to be watched and read, those of the gallery first.
#pragma once

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
    void Push(FolderJob job, bool ofGallery) {
        if (job.IsWhole() && !whole_.insert(job.folder).second) return;
        (ofGallery ? gallery_ : others_).push_back(std::move(job));
    }
    // There must be one.
    FolderJob Pop() {
        std::deque<FolderJob>& jobs = gallery_.empty() ? others_ : gallery_;
        FolderJob job = std::move(jobs.front());
        jobs.pop_front();
        if (job.IsWhole()) whole_.erase(job.folder);
        return job;
    }
    void Clear() {
        gallery_.clear();
        others_.clear();
        whole_.clear();
    }
    bool HasGalleryJobs() const { return !gallery_.empty(); }
    bool IsEmpty() const { return gallery_.empty() && others_.empty(); }

  private:
    std::deque<FolderJob> gallery_;
    std::deque<FolderJob> others_;
    std::unordered_set<std::string> whole_;  // the folders of whole jobs
};

}  // namespace watcher
