#include "plugin-modules/Gallery/src/notifications/NotificationPayloads.h"

#include <utility>

#include "common/text/TextUtil.h"

using KXP::Allocator;
using KXP::Value;

namespace notifications {
namespace {

// Adds to the payload its only member, `name`, an object whose only member is `key`.
void WriteNested(Value& payload, Allocator& allocator, const char* name, const char* key, Value inner) {
    Value object(rapidjson::kObjectType);
    object.AddMember(rapidjson::StringRef(key), inner, allocator);
    payload.AddMember(rapidjson::StringRef(name), object, allocator);
}

Value RecordOf(const TrackedUGC& ugc, Allocator& allocator) {
    Value record;
    TrackedUGC::CreateUGCJSONValue(ugc, record, allocator);
    return record;
}

}  // namespace

Capacity CapacityOf(const Settings& settings) {
    return {settings.GetCapEnabled(), settings.GetMaxSizePercent(), settings.GetTotalDiskSpaceMB(),
            settings.GetCurrentSizeMB()};
}

void WriteCapacity(Value& payload, Allocator& allocator, const Capacity& capacity) {
    Value object(rapidjson::kObjectType);
    object.AddMember("enabled", capacity.enabled, allocator);
    object.AddMember("capacityPercent", capacity.percent, allocator);
    object.AddMember("totalDiskSpaceMB", capacity.totalDiskSpaceMB, allocator);
    object.AddMember("usageMB", capacity.usageMB, allocator);
    payload.AddMember("capacity", object, allocator);
}

void WritePath(Value& payload, Allocator& allocator, const std::string& path) {
    // The path comes from the file system and may not be UTF-8, as messages must be.
    payload.AddMember("path", Value(KXP::ToValidUtf8(path), allocator), allocator);
}

void WriteCaptureSaved(Value& payload, Allocator& allocator, const TrackedUGC& ugc, bool unannounced) {
    WriteNested(payload, allocator, "captureSaved", "ugc", RecordOf(ugc, allocator));
    payload["captureSaved"].AddMember("unannounced", unannounced, allocator);
}

void WriteHighlightCaptureFailed(Value& payload, Allocator& allocator, int errorCode) {
    WriteNested(payload, allocator, "highlightCaptureFailed", "errorCode", Value(errorCode));
}

void WriteUGCDeleted(Value& payload, Allocator& allocator, const TrackedUGC& ugc) {
    WriteNested(payload, allocator, "ugcDeleted", "ugc", RecordOf(ugc, allocator));
}

void WriteTrackerUpdate(Value& payload, Allocator& allocator, TrackerUpdateState state) {
    WriteNested(payload, allocator, "galleryPathUpdateStatus", "status",
                Value(TrackerUpdateStateName(state), allocator));
}

void WriteHighlightCanceled(Value& payload, Allocator& allocator, const Highlight& highlight) {
    Value record;
    Highlight::CreateHighlightJSONValue(highlight, record, allocator);
    WriteNested(payload, allocator, "highlightCanceled", "highlight", std::move(record));
}

void WriteOpenSummary(Value& payload, Allocator& allocator, const std::vector<TrackedUGC>& highlights) {
    Value list(rapidjson::kArrayType);
    list.Reserve(static_cast<rapidjson::SizeType>(highlights.size()), allocator);
    for (const TrackedUGC& ugc : highlights)
        list.PushBack(RecordOf(ugc, allocator), allocator);
    WriteNested(payload, allocator, "openSummary", "ugc", std::move(list));
}

void WriteDiskSpaceCondition(Value& payload, Allocator& allocator, bool low) {
    WriteNested(payload, allocator, "checkDiskSpace", "lowDiskSpace", Value(low));
}

void WriteGalleryIsFull(Value& payload, Allocator& allocator, bool full) {
    payload.AddMember("galleryIsFull", full, allocator);
}

void WriteMontageProgress(Value& payload, Allocator& allocator, double progress) {
    payload.AddMember("progress", progress, allocator);
}

}  // namespace notifications
