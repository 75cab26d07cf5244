// How captures and what is known of them come together.

#include <utility>

#include "CobalixUtil.h"
#include "common/JsonHelpers.h"
#include "common/System.h"
#include "libraries/share-common/HighlightsConfig.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"

namespace {

bool ReadHighlightsConfig(const std::string& application, HighlightConfigData& config) {
    try {
        return !HighlightsConfig(application).ReadConfig(config).Failed();
    } catch (const std::exception&) {
        return false;  // its folder cannot be made
    }
}

}  // namespace

KXP::RetVal ZvGalleryAPI::GetGameUGC(const std::string& game, std::vector<TrackedUGC>& out) {
    const std::shared_ptr<UGCTracker> tracker = GetUGCTracker();
    if (!tracker) return kNoTracker;
    KXP::RetVal found = tracker->GetGameUGC(game, out);
    LocalizeHighlightNames(out, "GetGameUGC");
    return found;
}

KXP::RetVal ZvGalleryAPI::GetRecentUGC(unsigned count, std::vector<TrackedUGC>& out) {
    const std::shared_ptr<UGCTracker> tracker = GetUGCTracker();
    if (!tracker) return kNoTracker;
    KXP::RetVal found = tracker->GetRecentUGC(count, out);
    LocalizeHighlightNames(out, "GetRecentUGC");
    return found;
}

void ZvGalleryAPI::OnCaptureSaved(std::unique_ptr<KXP::JSONMessage> message) {
    std::string mode;
    std::string path;
    try {
        const KXP::Value& payload = std::as_const(*message).payload();
        mode = KXP::jsonGetValue<std::string>(payload, "captureMode");
        path = KXP::jsonGetValue<std::string>(payload, "path");
    } catch (const std::exception&) {
        KXP_LOG(KXP::LogFailure, "OnCaptureSaved::Invalid parameters");
        return;
    }
    if (mode.empty() || path.empty()) {
        KXP_LOG(KXP::LogFailure, "OnCaptureSaved::empty path");
        return;
    }
    const std::shared_ptr<UGCTracker> tracker = GetUGCTracker();
    if (!tracker) return;
    const bool tracked = tracker->IsTrackedFile(path);
    if (!tracked) {
        pendingNotifications_.Put(path, false, *message);
        tracker->TrackFile(path);
    }
    // The tracker may have come to know the file between the two.
    if (tracked || tracker->IsTrackedFile(path)) TellSaved(*tracker, path, !tracked);
}

void ZvGalleryAPI::TellSaved(UGCTracker& tracker, const std::string& path, bool onlyIfItWaits) {
    tracker.Tell([this, &tracker, path, onlyIfItWaits] {
        bool unannounced = false;
        const auto found = pendingNotifications_.Take(path, unannounced);
        if (onlyIfItWaits && found != PendingNotifications::Found::ThisWaited) return;
        TrackedUGC ugc;
        if (!tracker.GetUGCData(path, ugc).Failed()) NotifyCaptureSaved(ugc, false);
    });
}

void ZvGalleryAPI::OnHighlightSaved(std::unique_ptr<KXP::JSONMessage> message) {
    const KXP::Value& payload = std::as_const(*message).payload();
    const KXP::Value& told = KXP::JSONGetObjectOrEmpty(payload, "highlight");
    if (told.ObjectEmpty()) {
        KXP_LOG(KXP::LogFailure, "OnHighlightSaved::Invalid notification data");
        return;
    }
    std::string path;
    try {
        path = KXP::jsonGetValue<std::string>(told, "path");
    } catch (const std::exception&) {
        KXP_LOG(KXP::LogFailure, "OnHighlightSaved::Invalid path");
        return;
    }
    if (path.empty()) {
        KXP_LOG(KXP::LogFailure, "OnHighlightSaved::empty path");
        return;
    }
    Highlight highlight;
    Highlight::ParseHighlightJSON(highlight, told);
    const bool unannounced = KXP::jsonGetValueOrDefault<bool>(payload, "unannounced", false);
    const std::shared_ptr<UGCTracker> tracker = GetUGCTracker();
    if (!tracker) return;
    if (!tracker->IsTrackedFile(path)) {
        pendingNotifications_.Put(path, unannounced, *message);
        tracker->TrackFile(path);
        // The watcher may have been faster: without what is told here the record has an id of its own.
        TrackedUGC ugc;
        if (tracker->GetUGCData(path, ugc).Failed() || ugc.id == highlight.GetId()) return;
    }
    TellHighlightSaved(*tracker, highlight, unannounced);
}

void ZvGalleryAPI::TellHighlightSaved(UGCTracker& tracker, const Highlight& highlight, bool unannounced) {
    // Not left for the news of the record as it was, which may be on its way.
    bool waiting = false;
    (void)pendingNotifications_.Take(highlight.GetPath(), waiting);
    tracker.UpdateHighlightInfo(highlight);
    tracker.Tell([this, &tracker, path = highlight.GetPath(), unannounced] {
        TrackedUGC ugc;
        if (!tracker.GetUGCData(path, ugc).Failed()) NotifyHighlightSaved(ugc, unannounced);
    });
}

void ZvGalleryAPI::OnHighlightCaptureFailed(std::unique_ptr<KXP::JSONMessage> message) {
    const KXP::Value& payload = std::as_const(*message).payload();
    const KXP::Value& told = KXP::JSONGetObjectOrEmpty(payload, "highlight");
    KXP_LOG(KXP::LogMilestone, "OnHighlightCaptureFailed");
    Highlight highlight;
    Highlight::ParseHighlightJSON(highlight, told);
    if (const std::shared_ptr<UGCTracker> tracker = GetUGCTracker())
        tracker->DequeuePendingHighlight(highlight);
    NotifyHighlightCaptureFailed(KXP::jsonGetValue<int>(payload, "errorCode"));
}

void ZvGalleryAPI::NotifyUGCAdded(TrackedUGC ugc) {
    bool unannounced = true;
    switch (pendingNotifications_.Take(ugc.path, unannounced)) {
        case PendingNotifications::Found::NothingWaits:
            NotifyCaptureSaved(ugc, true);  // the file turned up on its own
            return;
        case PendingNotifications::Found::OthersWait:
            return;  // a page that waits for its own captures is not told of foreign ones
        case PendingNotifications::Found::ThisWaited:
            break;
    }
    if (TrackedUGC::IsAHighlight(ugc)) {
        NotifyHighlightSaved(ugc, unannounced);
    } else {
        NotifyCaptureSaved(ugc, false);
    }
}

bool ZvGalleryAPI::GetHighlightInfo(const std::string& path, Highlight& highlight) {
    return pendingNotifications_.GetHighlight(path, highlight);
}

void ZvGalleryAPI::LocalizeHighlightNames(std::vector<TrackedUGC>& list, const char* caller) {
    for (TrackedUGC& ugc : list)
        if (TrackedUGC::IsAHighlight(ugc)) LocalizeHighlightName(ugc, caller);
}

void ZvGalleryAPI::LocalizeHighlightName(TrackedUGC& ugc, const char* caller) {
    HighlightConfigData config;
    if (!ReadHighlightsConfig(ugc.shortName, config)) {
        KXP_LOG(KXP::LogFailure, "%s: Cannot get config data, skip", caller);
        return;
    }
    const std::string& id = ugc.highlightDefinitionId;
    if (!HighlightsConfig::IsHighlightDefined(config, id)) {
        KXP_LOG(KXP::LogFailure, "%s: Unknown highlight definition ID [%s], skip it", caller, id.c_str());
        return;
    }
    std::string language;
    KXP::GetUserLanguage(language);
    ugc.highlightName =
        HighlightsConfig::GetLocalizedHighlightName(config.highlights.at(id), language, config.defaultLocale);
}
