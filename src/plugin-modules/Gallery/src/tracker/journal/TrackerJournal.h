// The tracker's file, with the sum of the gallery's tree that lets the next start skip inspecting the
// captures.
//
// The sum must not cover a file that is not on record: the next start would find the sum right and never look
// for that file. So while the source knows of changes that are not on record, the file holds a sum that
// matches no tree ("withheld"); the right one is written when everything is on record. If the process ends in
// between, the next start rebuilds. In a gallery that takes long to sum up, a write may also postpone the sum
// ("owed"), so that notifications of captures do not wait for it.
//
// One thread at a time uses the file; the others wait for their turn. This is not a mutex, because writing
// and summing log, and the thread that has the turn may take the source's locks.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

#include "common/json/JSONFile.h"
#include "common/results/RetVal.h"
#include "common/task/Clock.h"
#include "common/threads/Turns.h"
#include "plugin-modules/Gallery/src/tracker/journal/IJournalSource.h"
#include "plugin-modules/Gallery/src/tracker/journal/TrackerFileWriter.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

// Whether TrackerJournal::Open would find a unique name in the folder.
bool HasUniqueTrackerFileName(const std::string& shareFolder);

class TrackerJournal {
  public:
    // What a write does with the sum. If a change waits for the write, Keep renews it too.
    enum class Sum {
        Keep,
        Renew,
        Later,  // Renew, but owed if the last sum took longer than `sumInPassing`
    };

    // `source` outlives it. `gallery` ends in "/".
    TrackerJournal(IJournalSource& source, std::string shareFolder, std::string gallery, KXP::Clock& clock,
                   std::chrono::milliseconds sumInPassing);

    // Before other threads use the journal:

    // Selects the file: the tracker's file or, for a rebuild, a unique one that TakeOver moves to its place.
    // Throws std::runtime_error when no unique name is left.
    void Open(bool useUniqueFile);
    // Fails when there is no such file or it holds no JSON object. Writes keep the file's sum until one
    // renews it.
    KXP::RetVal Read(KXP::Document& document, TrackerInfo& info);

    // Any thread, with none of the source's locks held:

    // The sum of the tree on disk. False when the gallery cannot be read.
    bool MeasureFolder(uint32_t& crc);
    KXP::RetVal WriteUGCToTracker(Sum sum);
    bool OwesSum() const { return sumOwed_; }
    // Writes the right sum if it was withheld and everything is on record now.
    void ReleaseSum();
    // Makes the file of a rebuild the tracker's file.
    void TakeOver();
    // Deletes the file; the next write makes it anew.
    void DeleteTrackerFile();
    // Nothing touches the file after this. Deletes the file of a rebuild that was not taken over.
    void Close();

  private:
    void RenewSum(bool pending);
    void WithholdSum();

    IJournalSource& source_;
    const std::string shareFolder_;
    const std::string gallery_;
    KXP::Clock& clock_;
    const std::chrono::milliseconds sumInPassing_;
    KXP::Turns turns_;
    std::atomic<bool> sumOwed_{false};

    // Used by the thread that has the turn.
    KXP::JSONFile trackerFile_;
    TrackerFileWriter writer_;
    uint32_t folderCRC_ = 0;
    std::chrono::nanoseconds sumTook_{0};  // last time
    bool sumWithheld_ = false;
    bool releaseQueued_ = false;
    bool replaceTrackerFile_ = false;
    bool closed_ = false;
};
