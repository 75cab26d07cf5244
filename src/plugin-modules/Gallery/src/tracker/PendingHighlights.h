// The highlights in flight: announced, with their final id, while their files are yet to come.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "common/Mutex.h"
#include "libraries/share-common/Highlight.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

// Any thread. Its mutex is a leaf.
class PendingHighlights {
  public:
    // Keeps it under its message bus reference, in place of an earlier one.
    void Enqueue(const Highlight& highlight) EXCLUDES(mutex_);
    // Forgets the one with the same reference; false when there is none.
    bool Dequeue(const Highlight& highlight) EXCLUDES(mutex_);
    // Appends those of the game and, unless that is empty, of the group.
    void GetPendingHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                              const std::string& group) const EXCLUDES(mutex_);

  private:
    mutable KXP::Mutex mutex_;
    std::map<std::string, Highlight> highlights_ GUARDED_BY(mutex_);
};
