// The payloads of notifications. Each function adds the members of one notification to its empty payload; the
// hub makes the messages and sends them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/json/Json.h"
#include "libraries/share-common/Highlight.h"
#include "plugin-modules/Gallery/src/settings/Settings.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

namespace notifications {

// The cap on the gallery's size, and the current size.
struct Capacity {
    bool enabled = false;
    uint32_t percent = 0;  // of the volume
    uint32_t totalDiskSpaceMB = 0;
    uint32_t usageMB = 0;
};

Capacity CapacityOf(const Settings& settings);

void WriteCapacity(KXP::Value& payload, KXP::Allocator& allocator, const Capacity& capacity);
void WritePath(KXP::Value& payload, KXP::Allocator& allocator, const std::string& path);
void WriteCaptureSaved(KXP::Value& payload, KXP::Allocator& allocator, const TrackedUGC& ugc,
                       bool unannounced);
void WriteHighlightCaptureFailed(KXP::Value& payload, KXP::Allocator& allocator, int errorCode);
void WriteUGCDeleted(KXP::Value& payload, KXP::Allocator& allocator, const TrackedUGC& ugc);
void WriteTrackerUpdate(KXP::Value& payload, KXP::Allocator& allocator, TrackerUpdateState state);
void WriteHighlightCanceled(KXP::Value& payload, KXP::Allocator& allocator, const Highlight& highlight);
void WriteOpenSummary(KXP::Value& payload, KXP::Allocator& allocator,
                      const std::vector<TrackedUGC>& highlights);
void WriteDiskSpaceCondition(KXP::Value& payload, KXP::Allocator& allocator, bool low);
void WriteGalleryIsFull(KXP::Value& payload, KXP::Allocator& allocator, bool full);
void WriteMontageProgress(KXP::Value& payload, KXP::Allocator& allocator, double progress);

}  // namespace notifications
