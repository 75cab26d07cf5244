// The saved-notifications of the capture service whose files are not tracked yet. Knows neither the hub nor
// the tracker. Any thread may call any function.
#pragma once

#include <map>
#include <string>

#include "common/Mutex.h"
#include "common/message/JSONMessage.h"
#include "libraries/share-common/Highlight.h"

class PendingNotifications {
  public:
    enum class Found { NothingWaits, OthersWait, ThisWaited };

    // Replaces what waited for `path`. What the message tells of a highlight is read here and not when it is
    // asked for: reading may log, and who asks may hold a lock.
    void Put(const std::string& path, bool unannounced, const KXP::JSONMessage& message) EXCLUDES(mutex_);

    // Takes out what waits for `path`; `unannounced` is set for ThisWaited alone.
    Found Take(const std::string& path, bool& unannounced) EXCLUDES(mutex_);

    // The highlight that waits for `path`, which is an empty one when the message told of none. False, and
    // `highlight` as it was, when nothing waits for the path.
    bool GetHighlight(const std::string& path, Highlight& highlight) const EXCLUDES(mutex_);

  private:
    struct Entry {
        bool unannounced = false;
        Highlight highlight;
    };

    mutable KXP::Mutex mutex_;
    // What never gets tracked stays until the end.
    std::map<std::string, Entry> entries_ GUARDED_BY(mutex_);
};
