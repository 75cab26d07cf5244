// The requests for settings and disk space, and what watches over the latter.

#include <utility>

#include "CobalixUtil.h"
#include "common/DirUtil.h"
#include "common/Drives.h"
#include "common/Exception.h"
#include "common/JsonHelpers.h"
#include "common/Profile.h"
#include "common/TextUtil.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"

using KXP::Code::kInvalidArgument;

namespace {

constexpr uint32_t kLowDiskMB = 300;

struct DriveSpace {
    bool measured = false;
    uint32_t freeMB = 0;
    uint32_t totalMB = 0x7FFFFFFF;  // as where it cannot be measured

    bool IsLow() const { return measured && freeMB < kLowDiskMB; }
};

DriveSpace SpaceAt(const std::string& path) {
    DriveSpace space;
    space.measured = KXP::GetDriveSpace(path, space.freeMB, space.totalMB);
    return space;
}

}  // namespace

// What a request to change settings has come to so far.
struct ZvGalleryAPI::SettingsProgress {
    bool parameterSeen = false;
    bool changed = false;
    bool capacitySkip = false;  // the switch of the cap stayed as it was
};

KXP::RetVal ZvGalleryAPI::GetSettings(std::unique_ptr<KXP::JSONMessage>, KXP::Value& response,
                                      KXP::Allocator& allocator) {
    queue_.AssertOnWorker();
    return KXP::RunRequest([&] { return WriteSettingsAnswer(response, allocator); });
}

KXP::RetVal ZvGalleryAPI::WriteSettingsAnswer(KXP::Value& response, KXP::Allocator& allocator) {
    const bool enabled = settings_.GetCapEnabled();
    const unsigned percent = settings_.GetMaxSizePercent();
    const unsigned usage = settings_.GetCurrentSizeMB();
    const unsigned total = settings_.GetTotalDiskSpaceMB();
    KXP_LOG(KXP::LogMilestone,
            "GetSettings:: enabled(%s), capacityPercent(%d), usageMB(%d), totalDiskSpaceMB(%d)",
            enabled ? "true" : "false", percent, usage, total);
    const auto text = [&](const std::string& value) {
        return KXP::Value(KXP::ToValidUtf8(value), allocator);
    };
    KXP::Value settings(rapidjson::kObjectType);
    settings.AddMember("path", text(settings_.GetGalleryPath()), allocator);
    settings.AddMember("userGalleryPath", text(settings_.GetUserGalleryPath()), allocator);
    settings.AddMember("tempFolderPath", text(settings_.GetTempFolder()), allocator);
    settings.AddMember("trackerStatus", text(TrackerUpdateStateName(settings_.GetTrackerUpdateState())),
                       allocator);
    KXP::Value capacity(rapidjson::kObjectType);
    capacity.AddMember("enabled", enabled, allocator);
    capacity.AddMember("capacityPercent", percent, allocator);
    capacity.AddMember("usageMB", usage, allocator);
    capacity.AddMember("totalDiskSpaceMB", total, allocator);
    settings.AddMember("capacity", capacity, allocator);
    response.AddMember("settings", settings, allocator);
    return {};
}

KXP::RetVal ZvGalleryAPI::SetSettings(std::unique_ptr<KXP::JSONMessage> message, KXP::Value&,
                                      KXP::Allocator&) {
    queue_.AssertOnWorker();
    const KXP::Value& payload = std::as_const(*message).payload();
    return KXP::RunRequest([&] { return ApplySettings(KXP::JSONGetObjectOrEmpty(payload, "settings")); });
}

// In binding order: what one step has accepted stays in force when a later one fails.
KXP::RetVal ZvGalleryAPI::ApplySettings(const KXP::Value& wanted) {
    if (wanted.ObjectEmpty()) return {kInvalidArgument, "\"settings\" object not defined", 0};
    SettingsProgress progress;
    const auto galleryPath = KXP::jsonGetValueOrDefault<std::string>(wanted, "userGalleryPath", "");
    KXP::RetVal result = ApplyGalleryPath(galleryPath, progress);
    if (result.Failed()) return result;
    const auto tempFolder = KXP::jsonGetValueOrDefault<std::string>(wanted, "tempFolderPath", "");
    result = ApplyTempFolder(tempFolder, progress);
    if (result.Failed()) return result;
    const KXP::Value& capacity = KXP::JSONGetObjectOrEmpty(wanted, "capacity");
    if (capacity.ObjectEmpty() && galleryPath.empty() && tempFolder.empty())
        return {kInvalidArgument, "No valid parameter data", 0};
    ApplyCapacity(capacity, progress);
    return SaveSettings(progress);
}

KXP::RetVal ZvGalleryAPI::ApplyGalleryPath(const std::string& path, SettingsProgress& progress) {
    if (path.empty()) return {};
    if (!KXP::SamePath(path, settings_.GetUserGalleryPath())) return ChangeGalleryPath(path, progress);
    KXP_LOG(KXP::LogMilestone, "Skipping path change as paths are the same");
    progress.parameterSeen = true;
    return {};
}

KXP::RetVal ZvGalleryAPI::ChangeGalleryPath(const std::string& path, SettingsProgress& progress) {
    const std::string previous = settings_.GetUserGalleryPath();
    if (!settings_.SetUserGalleryPath(path)) return {kInvalidArgument, "Invalid path defined", 0};
    oldGalleryPath_ = previous;
    InstallTracker(true);
    progress.parameterSeen = true;
    progress.changed = true;
    return {};
}

KXP::RetVal ZvGalleryAPI::CancelPathUpdate(std::unique_ptr<KXP::JSONMessage>, KXP::Value&, KXP::Allocator&) {
    queue_.AssertOnWorker();
    KXP_LOG(KXP::LogMilestone, "CancelPathUpdate: restore to old Gallery path");
    return KXP::RunRequest([&] { return RestoreGalleryPath(); });
}

KXP::RetVal ZvGalleryAPI::RestoreGalleryPath() {
    EndTracker();
    settings_.SetTrackerUpdateState(CancelUpdate);
    if (!settings_.SetUserGalleryPath(oldGalleryPath_)) return {kInvalidArgument, "Invalid path defined", 0};
    if (!settings_.WriteSettings()) return {KXP::Code::kFailure, "Failed to save settings to disk", 0};
    InstallTracker(false);
    NotifyTrackerUpdate(CancelUpdateComplete);
    return {};
}

KXP::RetVal ZvGalleryAPI::ApplyTempFolder(const std::string& path, SettingsProgress& progress) {
    if (path.empty()) return {};
    if (KXP::SamePath(path, settings_.GetTempFolder())) {
        KXP_LOG(KXP::LogMilestone, "Skipping temp path change as paths are the same");
    } else {
        if (!settings_.SetTempFolder(path)) return {kInvalidArgument, "Invalid path defined", 0};
        progress.changed = true;
        NotifyGalleryTempFolderChange(path);
    }
    progress.parameterSeen = true;
    return {};
}

// One notification, whichever of the two values changed.
void ZvGalleryAPI::ApplyCapacity(const KXP::Value& capacity, SettingsProgress& progress) {
    ApplyCapEnabled(capacity, progress);
    if (ApplyCapPercent(capacity, progress) || !progress.capacitySkip) {
        NotifyGalleryCapStateChange();
    } else {
        KXP_LOG(KXP::LogMilestone, "Skipping capacity notification");
    }
}

void ZvGalleryAPI::ApplyCapEnabled(const KXP::Value& capacity, SettingsProgress& progress) {
    if (!KXP::jsonObjectHasKey(capacity, "enabled", false)) {
        progress.capacitySkip = true;
        return;
    }
    const bool enabled = KXP::jsonGetValue<bool>(capacity, "enabled");
    if (enabled != settings_.GetCapEnabled()) {
        settings_.SetCapEnabled(enabled);
        progress.changed = true;
    } else {
        KXP_LOG(KXP::LogMilestone, "Skipping capacity state change as states are the same");
        progress.capacitySkip = true;
    }
    progress.parameterSeen = true;
}

// Whether the percentage changed.
bool ZvGalleryAPI::ApplyCapPercent(const KXP::Value& capacity, SettingsProgress& progress) {
    if (!KXP::jsonObjectHasKey(capacity, "capacityPercent", false)) return false;
    const auto percent = static_cast<unsigned>(KXP::jsonGetValue<int>(capacity, "capacityPercent"));
    progress.parameterSeen = true;
    if (percent == settings_.GetMaxSizePercent()) {
        KXP_LOG(KXP::LogMilestone, "Skipping capacity size change as values are the same");
        return false;
    }
    settings_.SetMaxSizePercent(percent);
    progress.changed = true;
    return true;
}

KXP::RetVal ZvGalleryAPI::SaveSettings(const SettingsProgress& progress) {
    if (!progress.changed)
        return {KXP::Code::kOk, "No action taken as all provided values are the same as existing ones", 0};
    if (!progress.parameterSeen)
        return {kInvalidArgument, "At least path or one parameter in \"capacity\" object must be defined", 0};
    if (settings_.WriteSettings()) return {};
    return {KXP::Code::kFailure, "Failed to save settings to disk", 0};
}

KXP::RetVal ZvGalleryAPI::CheckDiskSpace(std::unique_ptr<KXP::JSONMessage>, KXP::Value& response,
                                         KXP::Allocator& allocator) {
    queue_.AssertOnWorker();
    response.AddMember("lowDiskSpace", CheckLowDiskSpace(), allocator);
    return {};
}

bool ZvGalleryAPI::CheckLowDiskSpace() {
    const DriveSpace system = SpaceAt(KXP::GetSpecialDirectory(KXP::SD_HOME));
    DriveSpace gallery;
    try {
        gallery = SpaceAt(GetGalleryPath());
    } catch (const std::exception& error) {
        // Without its drive the gallery is not measured, and that is not low.
        KXP_LOG(KXP::LogFailure, "Gallery folder is gone: %s", KXP::ExceptionText(error).c_str());
    }
    KXP_LOG(KXP::LogMilestone,
            "%s systemTotalSpaceMB[%d] systemFreeSpaceMB = %d, galleryTotalSpaceMB[%d] galleryFreeSpaceMB = "
            "%d",
            "CheckLowDiskSpace", system.totalMB, system.freeMB, gallery.totalMB, gallery.freeMB);
    return system.IsLow() || gallery.IsLow();
}

void ZvGalleryAPI::UpdateGalleryUsage(unsigned usageMB) {
    settings_.SetCurrentSizeMB(usageMB);
    NotifyGalleryUpdated();
}
