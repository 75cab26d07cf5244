// Writes the tracker's file, and only what differs from the last write: if records were only added, the new
// ones and what follows them, of which the texts of unchanged games are kept; if nothing but the sum has
// changed, that alone. The resulting text is the same as that of a whole write. The stamps of the records are
// written in the same way after it.
//
// Not locked; one thread at a time. Recheck compares what it knows of the file with the disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
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
        struct Game {
            std::string name;
            uint64_t version;
            std::optional<TrackedUGCGame> changed;  // none if its text is kept
        };

        uint64_t firstPlace;  // the records before it are written already
        uint64_t endPlace;
        uint64_t generation;
        std::vector<RecordStore::RecordPtr> records;
        std::vector<Game> games;  // in their order
        TrackerInfo info;         // the caller sets the sum
    };

    // Makes the next write a whole one if `file` is not as the last write left it. Accesses the disk, so call
    // it with no lock held, before ContentOf.
    void Recheck(const KXP::JSONFile& file);
    // What has to be written of `store`, which is always the same one.
    Content ContentOf(const RecordStore& store) const;
    // `stamps` belongs to `file`. Whether the stamps could be written makes no difference to the result.
    KXP::RetVal Write(const KXP::JSONFile& file, StampFile& stamps, const Content& content,
                      KXP::HeldLog& log);

    // The file as the last write left it; none if it was not there then.
    const std::optional<KXP::JSONFile::Stamp>& left() const { return left_; }

  private:
    struct GameLines {
        std::string name;
        uint64_t version;
        size_t size;  // of its lines
    };
    using Lines = std::vector<GameLines>;  // in the order of the names
    // The last write, if it left at least one record in the file. The ends are offsets.
    struct Written {
        KXP::JSONFile::Stamp stamp;
        uint64_t generation;
        uint64_t endPlace;
        size_t records;     // how many are in the file
        size_t recordsEnd;  // after the "}" of the last one
        size_t gamesEnd;    // before the "]" of their array
    };

    bool TakeGames(const Content& content);
    bool HasGamesOf(const Content& content) const;
    void RenewGames(const Content& content);
    void MakeGames(const Content& content);
    KXP::RetVal WriteAll(const KXP::JSONFile& file, const Content& content, Written& written,
                         KXP::HeldLog& log) const;
    KXP::RetVal WriteRest(const KXP::JSONFile& file, const Content& content, Written& written,
                          KXP::HeldLog& log) const;

    Lines games_;
    std::string gamesText_;  // the array of games, with what stands before it and without its "]"
    std::optional<Written> written_;
    std::optional<KXP::JSONFile::Stamp> left_;
};
