// How captures and what is known of them come together.

#include <utility>

#include "CobalixUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/system/System.h"
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
    out = tracker->GetGameUGC(game);
    LocalizeHighlightNames(out, "GetGameUGC");
    return {};
}

KXP::RetVal ZvGalleryAPI::GetRecentUGC(unsigned count, std::vector<TrackedUGC>& out) {
    const std::shared_ptr<UGCTracker> tracker = GetUGCTracker();
    if (!tracker) return kNoTracker;
    out = tracker->GetRecentUGC(count);
    LocalizeHighlightNames(out, "GetRecentUGC");
    return {};
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
    Announcement announcement;
    Highlight::ParseHighlightJSON(announcement.highlight,
                                  KXP::JSONGetObjectOrEmpty(std::as_const(*message).payload(), "highlight"));
    if (const std::shared_ptr<UGCTracker> tracker = GetUGCTracker()) tracker->Announce(path, announcement);
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
    Announcement announcement{true, KXP::jsonGetValueOrDefault<bool>(payload, "unannounced", false), {}};
    Highlight::ParseHighlightJSON(announcement.highlight, told);
    if (const std::shared_ptr<UGCTracker> tracker = GetUGCTracker()) tracker->Announce(path, announcement);
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

void ZvGalleryAPI::NotifyUGCAdded(TrackedUGC ugc, Announcements::Found announced, bool unannounced) {
    switch (announced) {
        case Announcements::Found::NothingWaits:
            NotifyCaptureSaved(ugc, true);  // the file turned up on its own
            return;
        case Announcements::Found::OthersWait:
            return;  // a page that waits for its own captures does not hear of foreign ones
        case Announcements::Found::ThisWaited:
            break;
    }
    if (TrackedUGC::IsAHighlight(ugc)) {
        NotifyHighlightSaved(ugc, unannounced);
    } else {
        NotifyCaptureSaved(ugc, false);
    }
}

void ZvGalleryAPI::LocalizeHighlightNames(std::vector<TrackedUGC>& list, const char* caller) {
    HighlightConfigs configs;
    for (TrackedUGC& ugc : list)
        if (TrackedUGC::IsAHighlight(ugc)) LocalizeHighlightName(ugc, caller, configs);
}

void ZvGalleryAPI::LocalizeHighlightName(TrackedUGC& ugc, const char* caller) {
    HighlightConfigs configs;
    LocalizeHighlightName(ugc, caller, configs);
}

// Reads the file of each application once, however many of its highlights are in a list.
void ZvGalleryAPI::LocalizeHighlightName(TrackedUGC& ugc, const char* caller, HighlightConfigs& configs) {
    const auto [known, isNew] = configs.try_emplace(ugc.shortName);
    if (isNew) {
        HighlightConfigData read;
        if (ReadHighlightsConfig(ugc.shortName, read)) known->second = std::move(read);
    }
    if (!known->second) {
        KXP_LOG(KXP::LogFailure, "%s: Cannot get config data, skip", caller);
        return;
    }
    const HighlightConfigData& config = *known->second;
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
