// Highlights in flight: announced, with the id that their captures will have, before their files exist.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "common/threads/Mutex.h"
#include "libraries/share-common/Highlight.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

// Any thread. Its mutex may be taken under the tracker's.
class PendingHighlights {
  public:
    // Replaces one with the same message bus reference.
    void Enqueue(const Highlight& highlight) EXCLUDES(mutex_);
    // Removes the one with the same reference; returns false when there is none.
    bool Dequeue(const Highlight& highlight) EXCLUDES(mutex_);
    // Appends those of the game, or only those of `group` unless it is empty.
    void GetPendingHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                              const std::string& group) const EXCLUDES(mutex_);

    std::vector<Highlight> All() const EXCLUDES(mutex_);
    // Whether one of them has been promised this id.
    bool HasId(int32_t id) const EXCLUDES(mutex_);
    // The highest id that they were promised; 0 without any.
    int32_t LastId() const EXCLUDES(mutex_);

  private:
    mutable KXP::Mutex mutex_;
    std::map<std::string, Highlight> highlights_ GUARDED_BY(mutex_);
};
