// What the capture service has said of files that are not on record yet.
#pragma once

#include <map>
#include <string>

#include "common/Mutex.h"
#include "libraries/share-common/Highlight.h"

struct Announcement {
    bool ofHighlight = false;  // else of a capture, and `highlight` is what its message held, mostly nothing
    bool unannounced = false;  // what the pages are to read of a highlight
    Highlight highlight;
};

// Any thread. Its mutex is a leaf, taken under the tracker's as well.
class Announcements {
  public:
    // What waited when a file was notified of.
    enum class Found { NothingWaits, OthersWait, ThisWaited };

    // Replaces what waited for `path`. What never gets on record stays until the end.
    void Put(const std::string& path, const Announcement& announcement) EXCLUDES(mutex_);
    // Takes out what waits for `path`; `unannounced` is set for ThisWaited alone.
    Found Take(const std::string& path, bool& unannounced) EXCLUDES(mutex_);
    // The highlight that waits for `path`. False, and `highlight` as it was, when nothing waits for the path.
    bool GetHighlightInfo(const std::string& path, Highlight& highlight) const EXCLUDES(mutex_);

  private:
    mutable KXP::Mutex mutex_;
    std::map<std::string, Announcement> waiting_ GUARDED_BY(mutex_);
};
