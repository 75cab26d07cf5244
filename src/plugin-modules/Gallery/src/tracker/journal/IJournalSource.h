// What the journal needs from the record whose file it writes.
#pragma once

#include <string>
#include <vector>

#include "common/results/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/journal/TrackerFileWriter.h"

// Called by the thread that writes, which has the journal's turn and holds no lock.
class IJournalSource {
  public:
    virtual ~IJournalSource() = default;

    // Whether a change waits for the next write.
    virtual bool HasUnwritten() = 0;
    // What is known of changes in the gallery.
    struct Known {
        bool all = false;    // all that are known are on record
        bool exact = false;  // each is reported, with its path
        // The paths of changes on record that will be reported yet.
        std::vector<std::string> unreported;
    };
    // May wait about 100 ms for the answer.
    virtual Known AskKnown() = 0;
    // The current record, without the records that `writer` has already written.
    virtual TrackerFileWriter::Content TakeContent(const TrackerFileWriter& writer) = 0;
    // The content taken last is in the file, or could not be written.
    virtual void NoteWritten(const KXP::RetVal& written) = 0;
    // Queues a call of ReleaseSum for the time when the pending changes will have been reported.
    virtual void QueueRelease() = 0;
};
