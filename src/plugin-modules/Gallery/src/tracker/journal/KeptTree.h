// The gallery's tree as it was when it was summed last, and what has been reported of it since, so that the
// next sum need not look at every file again.
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "common/task/Clock.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/media/FolderCrc.h"

class KeptTree {
  public:
    // `gallery` without a "/" at its end.
    KeptTree(std::string gallery, KXP::Clock& clock) : gallery_(std::move(gallery)), clock_(clock) {}

    // Any thread. Something has changed at the path.
    void Note(const std::string& path) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        // With many changes reading the tree is as fast.
        if (changed_.size() >= kMostChanged) forget_ = true;
        if (!forget_) changed_.push_back(path);
    }
    // Not everything that changes is noted.
    void Forget() EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        forget_ = true;
    }

    // One thread at a time:

    // Sets `crc` to the sum of the tree on disk, reading as little as is known to be enough. False when the
    // gallery cannot be read. With `seen`, which may be null, it reads everything.
    bool Measure(unsigned int& crc, media::SeenFiles* seen) EXCLUDES(mutex_) {
        const std::vector<std::string> changed = TakeChanged();
        began_ = clock_.Now();
        const bool updated = !seen && !tree_.IsEmpty() && tree_.Update(changed);
        if (updated) media::SumTree(tree_, gallery_, crc);
        const bool measured = updated || media::SumFolder(gallery_, gallery_, crc, tree_, seen);
        took_ = clock_.Now() - began_;
        wasWhole_ = !updated;
        return measured;
    }
    // Whether it may hold times that nobody reports.
    bool HasLinks() const { return tree_.HasLinks(); }
    // Whether the last sum was of a tree that was read as a whole.
    bool WasWhole() const { return wasWhole_; }
    // When the last sum began.
    KXP::TimePoint began() const { return began_; }
    // Whether the next sum will take longer than `limit`, as far as can be known.
    bool IsSlow(std::chrono::milliseconds limit) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        const bool willUpdate = !tree_.IsEmpty() && !forget_;
        return took_ > limit && !(wasWhole_ && willUpdate);
    }

  private:
    static constexpr size_t kMostChanged = 256;

    std::vector<std::string> TakeChanged() EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        if (std::exchange(forget_, false)) tree_.Clear();
        return std::exchange(changed_, {});
    }

    const std::string gallery_;
    KXP::Clock& clock_;
    KXP::Mutex mutex_;
    bool forget_ GUARDED_BY(mutex_) = false;
    std::vector<std::string> changed_ GUARDED_BY(mutex_);

    // Used by the thread that measures.
    // A link is never a capture, so one that leads nowhere does not keep the sum from being taken.
    media::FolderTree tree_{media::FolderTree::LostLinks::Count};
    KXP::TimePoint began_;
    std::chrono::nanoseconds took_{0};
    bool wasWhole_ = true;
};
