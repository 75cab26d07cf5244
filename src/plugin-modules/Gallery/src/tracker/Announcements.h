// What the capture service has announced of files that are not on record yet.
#pragma once

#include <map>
#include <string>

#include "common/threads/Mutex.h"
#include "libraries/share-common/Highlight.h"

struct Announcement {
    bool ofHighlight = false;  // if not, `highlight` is what the message held, mostly nothing
    bool unannounced = false;  // the member of that name in a highlight's notification
    Highlight highlight;
};

// Any thread. Its mutex may be taken under the tracker's.
class Announcements {
  public:
    // Which announcements waited when a file got on record.
    enum class Found { NothingWaits, OthersWait, ThisWaited };

    // Replaces an announcement that waits for `path`. It is kept until the file gets on record.
    void Put(const std::string& path, const Announcement& announcement) EXCLUDES(mutex_);
    // Removes the announcement that waits for `path`; sets `unannounced` only for ThisWaited.
    Found Take(const std::string& path, bool& unannounced) EXCLUDES(mutex_);
    // Returns false, with `highlight` unchanged, when no announcement waits for `path`.
    bool GetHighlightInfo(const std::string& path, Highlight& highlight) const EXCLUDES(mutex_);

  private:
    mutable KXP::Mutex mutex_;
    std::map<std::string, Announcement> waiting_ GUARDED_BY(mutex_);
};
