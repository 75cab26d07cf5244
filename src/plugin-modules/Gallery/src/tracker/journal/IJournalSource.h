// What the journal asks of the record whose file it keeps.
#pragma once

#include "common/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/journal/TrackerFileWriter.h"

// Called by whichever thread writes, which has the journal's turn and holds no lock.
class IJournalSource {
  public:
    virtual ~IJournalSource() = default;

    // Whether a change waits for the next write.
    virtual bool HasUnwritten() = 0;
    // Whether all that has become known of the gallery is on record. May wait some 100 ms for the answer.
    virtual bool KnowsAll() = 0;
    // The record at this moment, without what `writer` has in the file already.
    virtual TrackerFileWriter::Content TakeContent(const TrackerFileWriter& writer) = 0;
    // What was taken last is in the file, or could not be written.
    virtual void NoteWritten(const KXP::RetVal& written) = 0;
    // Asks for a call of ReleaseSum a while later, after the news that is on its way has come.
    virtual void QueueRelease() = 0;
};
