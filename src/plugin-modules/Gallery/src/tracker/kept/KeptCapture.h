// What people gave a capture and its file does not hold: captions, and what notifications reported of a
// highlight. It outlives the tracker's file, in which a rebuild finds nothing.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

struct KeptFacts {
    std::string topBarText;
    std::string bottomBarText;

    bool told = false;  // whether a notification reported the rest
    std::string shortName;
    std::string highlightDefinitionId;
    std::string highlightName;
    std::string highlightGroupId;
    int32_t highlightTags = 0;
    int32_t highlightSignificance = 0;
    std::string eventTimeStamp;

    bool IsEmpty() const { return topBarText.empty() && bottomBarText.empty() && !told; }
    bool operator==(const KeptFacts& other) const;
    bool operator!=(const KeptFacts& other) const { return !(*this == other); }
};

// The captions of a record and, if `told`, what a notification reported of it.
KeptFacts FactsOf(const TrackedUGC& record, bool told);

// What a notification says of a highlight, with the captions of its record.
KeptFacts FactsOf(const Highlight& told, const TrackedUGC& captioned);

// Makes the record say what was kept of it: its captions and, if they were reported, the rest.
void Apply(const KeptFacts& facts, TrackedUGC& record);
// The same for what the file itself may say otherwise: its own texts have precedence.
void FillIn(const KeptFacts& facts, TrackedUGC& record);

struct KeptCapture {
    std::string path;
    FileStamp stamp;
    KeptFacts facts;
    int64_t goneSince = 0;  // when the file was found gone, in seconds since 1970; 0 while it exists

    bool operator==(const KeptCapture& other) const {
        return path == other.path && stamp == other.stamp && facts == other.facts &&
               goneSince == other.goneSince;
    }
    bool operator!=(const KeptCapture& other) const { return !(*this == other); }
};

// Never changes; a change replaces it.
using KeptPtr = std::shared_ptr<const KeptCapture>;
