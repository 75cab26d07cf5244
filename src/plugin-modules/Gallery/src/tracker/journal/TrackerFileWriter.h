// Writes the tracker's file, and does not write again what stands in it already: the records of a gallery
// come in at the end, and what follows them, games and sum, is small beside them. The text is the same either
// way.
//
// Not locked; one thread at a time. What it knows of the file is checked against the disk before it is used.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "common/JSONFile.h"
#include "common/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/record/RecordStore.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

class TrackerFileWriter {
  public:
    // What is to be in the file.
    struct Content {
        // Takes all but the records that are written already: those from `firstPlace` on.
        Content(const RecordStore& store, uint64_t firstPlace);

        uint64_t firstPlace;
        uint64_t endPlace;
        uint64_t generation;
        std::vector<RecordStore::RecordPtr> records;
        TrackedUGCGames games;
        TrackerInfo info;  // the sum is the caller's
    };

    // Forgets what it has written when `file` is not as that write left it. Touches the disk: call it outside
    // of locks, ahead of FirstPlace.
    void Recheck(const KXP::JSONFile& file);
    // From which place on the records of `store` are to be written; 0 for all.
    uint64_t FirstPlace(const RecordStore& store) const;
    KXP::RetVal Write(const KXP::JSONFile& file, const Content& content, KXP::HeldLog& log);

  private:
    // The last write, of one record at least.
    struct Written {
        KXP::JSONFile::Stamp stamp;
        uint64_t generation;
        uint64_t endPlace;
        size_t recordsEnd;  // behind the "}" of the last record
    };
    std::optional<Written> written_;
};
