// Writes the tracker's file. If records were only added since the last write, it writes the new ones and what
// follows them, which is small; the resulting text is the same as that of a whole write. The stamps of the
// records are written in the same way after it.
//
// Not locked; one thread at a time. Recheck compares what it knows of the file with the disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "common/json/JSONFile.h"
#include "common/results/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/journal/StampFile.h"
#include "plugin-modules/Gallery/src/tracker/record/RecordStore.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

class TrackerFileWriter {
  public:
    // What the file will hold.
    struct Content {
        // Takes the records from `firstPlace` on; those before it are written already.
        Content(const RecordStore& store, uint64_t firstPlace);

        uint64_t firstPlace;
        uint64_t endPlace;
        uint64_t generation;
        std::vector<RecordStore::RecordPtr> records;
        TrackedUGCGames games;
        TrackerInfo info;  // the caller sets the sum
    };

    // Makes the next write a whole one if `file` is not as the last write left it. Accesses the disk, so call
    // it with no lock held, before FirstPlace.
    void Recheck(const KXP::JSONFile& file);
    // The place from which the records of `store` have to be written; 0 for all.
    uint64_t FirstPlace(const RecordStore& store) const;
    // `stamps` belongs to `file`. Whether the stamps could be written makes no difference to the result.
    KXP::RetVal Write(const KXP::JSONFile& file, StampFile& stamps, const Content& content,
                      KXP::HeldLog& log);

  private:
    KXP::RetVal WriteText(const KXP::JSONFile& file, const Content& content, size_t& recordsEnd,
                          KXP::HeldLog& log) const;

    // The last write, if it left at least one record in the file.
    struct Written {
        KXP::JSONFile::Stamp stamp;
        uint64_t generation;
        uint64_t endPlace;
        size_t records;     // how many are in the file
        size_t recordsEnd;  // offset after the "}" of the last one
    };
    std::optional<Written> written_;
};
