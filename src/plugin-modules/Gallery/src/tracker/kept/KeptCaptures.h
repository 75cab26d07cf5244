// The facts that people gave the captures of all galleries, in memory and in a file of the share folder to
// which all processes of the user append (kKeptFileName).
//
// Any thread. File access has a turn of its own, with no lock held; it may log and wait for other processes.
// Nothing calls back, so a thread may call while it has another turn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common/results/RetVal.h"
#include "common/threads/Mutex.h"
#include "common/threads/Turns.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptCapture.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptFile.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptIndex.h"

class KeptCaptures {
  public:
    // In seconds since 1970.
    using WallClock = std::function<int64_t()>;
    static int64_t SystemTime();

    explicit KeptCaptures(const std::string& shareFolder, WallClock now = SystemTime);

    // Reads the file. Entries whose files have been gone for 90 days are left out.
    void Load();

    // See KeptIndex.
    KeptPtr Find(const std::string& path, const FileStamp& stamp) const;
    KeptPtr LatestOf(const std::string& path, const FileStamp& stamp) const;
    std::vector<KeptPtr> Snapshot() const;

    // A change in memory, for taking back.
    struct Change {
        KeptPtr put;     // null if the entry is too long for a line: nothing was changed
        KeptPtr former;  // the entry that was replaced; may be null
    };
    // Keeps the facts of a file that exists, whatever `goneSince` is, or forgets them if they are empty. In
    // memory at once, on disk after the next Save.
    Change Put(KeptCapture capture);
    // Undoes a Put that Save could not write. A later Put for the same file stays.
    void Retract(const Change& change);
    // The file with this path and stamp is gone since now, unless it was gone already.
    void NoteGone(const std::string& path, const FileStamp& stamp);

    bool HasUnsaved() const;
    // When it returns success, all that was put before outlasts a loss of power. Otherwise 0x80004005 with
    // the system's text; the changes remain for the next call.
    KXP::RetVal Save();
    // Writes the file anew if it is twice as long as its entries need.
    KXP::RetVal CompactIfLong();

    // The entries that other processes have changed since the last call; one without facts was removed.
    std::vector<KeptPtr> ReadNew();

  private:
    // What is not in the file yet.
    struct Unsaved {
        KeptPtr capture;
        std::string line;
    };

    Change Enter(KeptPtr capture) EXCLUDES(mutex_);
    void TakeIn(const KeptFile::Lines& lines, bool report) EXCLUDES(mutex_);
    void Report(const KXP::RetVal& read);
    KXP::RetVal SaveInTurn() EXCLUDES(mutex_);
    std::optional<std::string> WholeText(const KeptFile::Lines& others) EXCLUDES(mutex_);

    const WallClock now_;
    KXP::Turns turns_;

    // Used by the thread that has the turn.
    KeptFile file_;
    bool unreadable_ = false;

    mutable KXP::Mutex mutex_;
    KeptIndex index_ GUARDED_BY(mutex_);
    std::vector<Unsaved> unsaved_ GUARDED_BY(mutex_);
    std::vector<KeptPtr> changedByOthers_ GUARDED_BY(mutex_);
};
