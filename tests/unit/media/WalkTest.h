// Runs one walk over bytes in memory.
#pragma once

#include <memory>
#include <string>

#include "plugin-modules/Gallery/src/media/ByteCursor.h"
#include "plugin-modules/Gallery/src/media/SniffResult.h"

struct WalkOutcome : media::SniffResult {
    int32_t code = 0;
};

inline WalkOutcome RunWalk(int32_t (*walk)(media::ByteCursor&, media::SniffResult&),
                           const std::string& bytes) {
    // A copy of exactly the size, so that the sanitizers see a step behind the end.
    const auto exact = std::make_unique<char[]>(bytes.size());
    bytes.copy(exact.get(), bytes.size());
    media::MemorySource source({exact.get(), bytes.size()});
    media::ByteCursor cursor(source);
    WalkOutcome outcome;
    outcome.fileSubType = "Unknown";
    outcome.fileSource = "Undefined";
    outcome.code = walk(cursor, outcome);
    return outcome;
}
