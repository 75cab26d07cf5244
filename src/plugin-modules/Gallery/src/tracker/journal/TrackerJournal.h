// The tracker's file, and the sum of the gallery's tree in it, which lets the next start skip the look at
// each capture.
//
// The sum must not cover a file that is not on record: the next start would find the sum right and never look
// for that file. So while the source knows of news that is not on record yet, the file holds a sum that fits
// no tree ("withheld"), and the right one follows when all is known. A process that ends in between costs a
// rebuild. In a gallery whose sum takes long, a write may also leave the sum for later ("owed"), so that
// captures are notified without waiting for it.
//
// One thread at a time uses the file; the others wait for their turn. A turn is no lock that is held, because
// writing and summing log, and whoever has it may take the locks of its source.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

#include "common/JSONFile.h"
#include "common/RetVal.h"
#include "common/Turns.h"
#include "common/plugincommon/task/Clock.h"
#include "plugin-modules/Gallery/src/tracker/journal/IJournalSource.h"
#include "plugin-modules/Gallery/src/tracker/journal/TrackerFileWriter.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

class TrackerJournal {
  public:
    // What a write does about the sum. A change that waits renews the sum with Keep as well.
    enum class Sum {
        Keep,
        Renew,
        Later,  // renewed, or owed when the last one took longer than `sumInPassing`
    };

    // `source` outlives it. `gallery` ends in "/".
    TrackerJournal(IJournalSource& source, std::string shareFolder, std::string gallery, KXP::Clock& clock,
                   std::chrono::milliseconds sumInPassing);

    // Before other threads use the journal:

    // Names the file: that of the share folder or, for a rebuild, one of its own that TakeOver puts in its
    // place. Throws std::runtime_error when no unique name is left.
    void Open(bool useUniqueFile);
    // Fails when there is no such file or it holds no JSON object. The file's sum stays in force until it is
    // renewed.
    KXP::RetVal Read(KXP::Document& document, TrackerInfo& info);

    // Any thread, with none of the source's locks held:

    // The sum of the tree on disk. False when the gallery cannot be read.
    bool MeasureFolder(uint32_t& crc);
    KXP::RetVal WriteUGCToTracker(Sum sum);
    bool OwesSum() const { return sumOwed_; }
    // Puts the right sum into the file when it was withheld and all is known now.
    void ReleaseSum();
    // The file of a rebuild becomes the tracker's file.
    void TakeOver();
    // Deletes the file; the next write makes it anew.
    void DeleteTrackerFile();
    // Nothing touches the file after this. Deletes that of a rebuild that was not taken over.
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

    // By turn.
    KXP::JSONFile trackerFile_;
    TrackerFileWriter writer_;
    uint32_t folderCRC_ = 0;
    std::chrono::nanoseconds sumTook_{0};  // the last time
    bool sumWithheld_ = false;
    bool releaseQueued_ = false;
    bool replaceTrackerFile_ = false;
    bool closed_ = false;
};
