// How captures and what is known of them come together.

#include "CobalixUtil.h"
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
