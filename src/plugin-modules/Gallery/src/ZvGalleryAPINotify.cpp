// Every notification to the pages.

#include <utility>

#include "CobalixUtil.h"
#include "common/json/JsonHelpers.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"
#include "plugin-modules/Gallery/src/notifications/NotificationPayloads.h"

using namespace notifications;

namespace {

// The name that most notifications share; the one member of the payload distinguishes them.
constexpr const char* kGalleryNotifications = "GalleryNotifications";

}  // namespace

template <typename Write, typename... Arguments>
void ZvGalleryAPI::Notify(const char* name, Write write, const Arguments&... arguments) {
    auto message = KXP::Message::CreateNotification(name, plugin_.GetSystemName().c_str(),
                                                    plugin_.GetModuleName().c_str());
    write(message->payload(), message->allocator(), arguments...);
    SendNotification(std::move(message));
}

void ZvGalleryAPI::SendNotification(std::unique_ptr<KXP::JSONMessage> message) {
    if (!plugin_.SendResponse(std::move(message), {}))
        KXP_LOG(KXP::LogFailure, "Unable to send JSON notification");
}

bool ZvGalleryAPI::HandleMsg(std::unique_ptr<KXP::JSONMessage> message) {
    if (KXP::Message::Method(*message) != "UpdateMontageProgress") return false;
    const double progress = KXP::jsonGetValue<double>(std::as_const(*message).payload(), "progress");
    Notify("MontageNotification", WriteMontageProgress, progress);
    return true;
}

void ZvGalleryAPI::NotifyGalleryUpdated() {
    Notify("GalleryUpdatedNotification", WriteCapacity, CapacityOf(settings_));
}

void ZvGalleryAPI::NotifyGalleryCapStateChange() {
    if (const std::shared_ptr<UGCTracker> tracker = GetUGCTracker())
        settings_.SetCurrentSizeMB(tracker->GetCurrentSizeMB());
    Notify("GalleryCapStateChangeNotification", WriteCapacity, CapacityOf(settings_));
}

void ZvGalleryAPI::NotifyGalleryPathChange(const std::string& path) {
    Notify("PathChangeNotification", WritePath, path);
}

void ZvGalleryAPI::NotifyGalleryTempFolderChange(const std::string& path) {
    Notify("TempFolderChangeNotification", WritePath, path);
}

void ZvGalleryAPI::NotifyCaptureSaved(const TrackedUGC& ugc, bool unannounced) {
    Notify(kGalleryNotifications, WriteCaptureSaved, ugc, unannounced);
}

void ZvGalleryAPI::NotifyHighlightSaved(TrackedUGC& ugc, bool unannounced) {
    LocalizeHighlightName(ugc, "NotifyHighlightSaved");
    NotifyCaptureSaved(ugc, unannounced);
}

void ZvGalleryAPI::NotifyHighlightCaptureFailed(int errorCode) {
    Notify(kGalleryNotifications, WriteHighlightCaptureFailed, errorCode);
}

void ZvGalleryAPI::NotifyUGCDeleted(const TrackedUGC& ugc) {
    Notify(kGalleryNotifications, WriteUGCDeleted, ugc);
}

void ZvGalleryAPI::NotifyTrackerUpdate(TrackerUpdateState state) {
    if (state == TrackerUpdateComplete) NotifyGalleryPathChange(GalleryPathForPages());
    KXP_LOG(KXP::LogMilestone, "NotifyTrackerUpdate::%s", TrackerUpdateStateName(state).c_str());
    Notify(kGalleryNotifications, WriteTrackerUpdate, state);
}

void ZvGalleryAPI::NotifyHighlightCanceled(const Highlight& highlight) {
    Notify(kGalleryNotifications, WriteHighlightCanceled, highlight);
}

void ZvGalleryAPI::NotifyOpenSummary(std::vector<TrackedUGC> highlights) {
    LocalizeHighlightNames(highlights, "OpenHighlightsGroupSummary");
    Notify(kGalleryNotifications, WriteOpenSummary, highlights);
}

void ZvGalleryAPI::NotifyDiskSpaceCondition(bool low) {
    Notify(kGalleryNotifications, WriteDiskSpaceCondition, low);
}

void ZvGalleryAPI::NotifyGalleryIsFull(bool full) {
    Notify(kGalleryNotifications, WriteGalleryIsFull, full);
}
