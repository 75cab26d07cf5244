#include "plugin-modules/Gallery/src/endpoints/SettingsRequests.h"

#include <chrono>
#include <utility>

#include "CobalixUtil.h"
#include "common/files/DirUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/results/Exception.h"
#include "common/task/StuckWork.h"
#include "common/text/TextUtil.h"

using KXP::Code::kInvalidArgument;

// What a request to change settings has done so far.
struct SettingsRequests::Progress {
    bool parameterSeen = false;
    bool changed = false;
    bool capacitySkip = false;  // the cap was neither switched on nor off
};

namespace {

// Longer than the time after which a queue that was asked to end counts as stalled: it refuses such an entry,
// which would otherwise always be one more to wait for.
constexpr std::chrono::milliseconds kFollowPeriod{1500};
static_assert(kFollowPeriod.count() > KXP::TaskQueue::kStallTimeoutMs);

const KXP::RetVal kUnusablePath{kInvalidArgument, "Invalid path defined", 0};

// Of settings that could not be read at the start, and of a tracker that could not be made.
constexpr std::chrono::seconds kReadAgainPeriod{10};

// Two folders that do not exist have no place by which they could be the same.
bool IsSameFolder(const std::string& a, const std::string& b) {
    return a == b || (KXP::DirectoryExists(a) && KXP::DirectoryExists(b) && KXP::SamePath(a, b));
}

// Whether the disk of the folder answers, for a folder that the worker is about to use.
bool Answers(const std::string& folder) {
    if (KXP::BoundedLook().Run([folder] { (void)KXP::DirectoryExists(folder); }, nullptr)) return true;
    KXP_LOG(KXP::LogFailure, "The disk of %s does not answer", folder.c_str());
    return false;
}

}  // namespace

void SettingsRequests::FollowRegularly() {
    KXP::TaskQueue& queue = api_.Plugin().task_queue();
    queue.EnqueueNotification(queue.Now() + kFollowPeriod, [this] {
        FollowRegularly();
        Follow();
    });
}

void SettingsRequests::Follow() {
    api_.AssertOnWorker();
    if (!settings_.IsRead()) return ReadAgainIfDue();
    ReplaceStoppedTracker();
    std::string gallery;
    const SettingsSet news = settings_.FollowFile(gallery);
    if ((news & kUserGalleryPath) != 0) FollowGallery(gallery);
    if ((news & kTempFolder) != 0) api_.NotifyGalleryTempFolderChange(settings_.GetTempFolder());
    if ((news & (kCapEnabled | kMaxSizePercent)) != 0) api_.NotifyGalleryCapStateChange();
}

KXP::RetVal SettingsRequests::ReadAgain() {
    lastRead_ = clock_.Now();
    return KXP::RunRequest([&] { return api_.ReadSettingsAgain(); });
}

void SettingsRequests::ReadAgainIfDue() {
    if (clock_.Now() - lastRead_ < kReadAgainPeriod) return;
    const KXP::RetVal read = ReadAgain();
    if (read.Failed() && settings_.IsRead())
        KXP_LOG(KXP::LogFailure, "The gallery cannot be used: %s", KXP::ToStr(read).c_str());
}

// One that a change of the gallery has stopped before it failed.
void SettingsRequests::ReplaceStoppedTracker() {
    const std::shared_ptr<UGCTracker> tracker = api_.GetUGCTracker();
    if (!tracker || !tracker->HasStopped() || clock_.Now() - lastRead_ < kReadAgainPeriod) return;
    lastRead_ = clock_.Now();
    const KXP::RetVal result = KXP::RunRequest([&]() -> KXP::RetVal {
        api_.ReInitializeTracker(false);
        return {};
    });
    if (result.Failed())
        KXP_LOG(KXP::LogFailure, "The gallery cannot be used: %s", KXP::ToStr(result).c_str());
}

void SettingsRequests::FollowGallery(const std::string& path) {
    const KXP::RetVal result = KXP::RunRequest([&]() -> KXP::RetVal {
        bool changed = false;
        return UseGallery(path, &Settings::AdoptUserGalleryPath, changed);
    });
    if (result.Failed())
        KXP_LOG(KXP::LogFailure, "The gallery that another process has chosen cannot be used: %s",
                KXP::ToStr(result).c_str());
}

KXP::RetVal SettingsRequests::GetSettings(std::unique_ptr<KXP::JSONMessage>, KXP::Value& response,
                                          KXP::Allocator& allocator) {
    Follow();
    return KXP::RunRequest([&]() -> KXP::RetVal {
        WriteSettingsAnswer(response, allocator);
        return {};
    });
}

void SettingsRequests::WriteSettingsAnswer(KXP::Value& response, KXP::Allocator& allocator) {
    const StoredSettings stored = settings_.GetStored();
    const bool enabled = stored.capEnabled;
    const unsigned percent = stored.maxSizePercent;
    const unsigned usage = settings_.GetCurrentSizeMB();
    const unsigned total = settings_.GetTotalDiskSpaceMB();
    KXP_LOG(KXP::LogMilestone,
            "GetSettings:: enabled(%s), capacityPercent(%d), usageMB(%d), totalDiskSpaceMB(%d)",
            enabled ? "true" : "false", percent, usage, total);
    const auto text = [&](const std::string& value) {
        return KXP::Value(KXP::ToValidUtf8(value), allocator);
    };
    KXP::Value settings(rapidjson::kObjectType);
    settings.AddMember("path", text(api_.GalleryPathSoon()), allocator);
    settings.AddMember("userGalleryPath", text(stored.userGalleryPath), allocator);
    settings.AddMember("tempFolderPath", text(stored.tempFolder), allocator);
    settings.AddMember("trackerStatus", text(TrackerUpdateStateName(stored.trackerUpdateState)), allocator);
    KXP::Value capacity(rapidjson::kObjectType);
    capacity.AddMember("enabled", enabled, allocator);
    capacity.AddMember("capacityPercent", percent, allocator);
    capacity.AddMember("usageMB", usage, allocator);
    capacity.AddMember("totalDiskSpaceMB", total, allocator);
    settings.AddMember("capacity", capacity, allocator);
    response.AddMember("settings", settings, allocator);
}

KXP::RetVal SettingsRequests::SetSettings(std::unique_ptr<KXP::JSONMessage> message, KXP::Value&,
                                          KXP::Allocator&) {
    if (KXP::RetVal read = ReadAgain(); read.Failed()) return read;
    Follow();
    const KXP::Value& payload = std::as_const(*message).payload();
    return KXP::RunRequest([&] { return ApplySettings(KXP::JSONGetObjectOrEmpty(payload, "settings")); });
}

KXP::RetVal SettingsRequests::ApplySettings(const KXP::Value& wanted) {
    if (wanted.ObjectEmpty()) return {kInvalidArgument, "\"settings\" object not defined", 0};
    Progress progress;
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
    return Save(progress);
}

KXP::RetVal SettingsRequests::ApplyGalleryPath(const std::string& path, Progress& progress) {
    if (path.empty()) return {};
    KXP::RetVal result = UseGallery(path, &Settings::SetUserGalleryPath, progress.changed);
    if (result.Failed()) return result;
    if (!progress.changed) KXP_LOG(KXP::LogMilestone, "Skipping path change as paths are the same");
    progress.parameterSeen = true;
    return {};
}

KXP::RetVal SettingsRequests::UseGallery(const std::string& path, bool (Settings::*set)(const std::string&),
                                         bool& changed) {
    const std::string current = settings_.GetUserGalleryPath();
    if (path == current) return {};
    if (!Answers(path)) return kUnusablePath;
    const bool currentAnswers = Answers(current);
    if (currentAnswers && IsSameFolder(path, current)) return {};
    const Settings::Gallery previous = settings_.GetGallery();
    if (!(settings_.*set)(path)) return kUnusablePath;
    try {
        // Nobody waits twice for the same disk.
        api_.ReInitializeTracker(true, currentAnswers ? KXP::kStuckAfter : std::chrono::milliseconds(0));
    } catch (...) {
        settings_.RestoreGallery(previous);
        throw;
    }
    oldGalleryPath_ = previous.path;
    changed = true;
    return {};
}

KXP::RetVal SettingsRequests::CancelPathUpdate(std::unique_ptr<KXP::JSONMessage>, KXP::Value&,
                                               KXP::Allocator&) {
    if (KXP::RetVal read = ReadAgain(); read.Failed()) return read;
    Follow();
    KXP_LOG(KXP::LogMilestone, "CancelPathUpdate: restore to old Gallery path");
    return KXP::RunRequest([&] { return RestoreGalleryPath(); });
}

KXP::RetVal SettingsRequests::RestoreGalleryPath() {
    if (!oldGalleryPath_.empty() && !Answers(oldGalleryPath_)) return kUnusablePath;
    api_.LeaveTracker();
    settings_.SetTrackerUpdateState(CancelUpdate);
    if (!settings_.SetUserGalleryPath(oldGalleryPath_)) return kUnusablePath;
    KXP::RetVal written = WriteSettings();
    if (written.Failed()) return written;
    api_.ReInitializeTracker(false);
    api_.NotifyTrackerUpdate(CancelUpdateComplete);
    return {};
}

KXP::RetVal SettingsRequests::ApplyTempFolder(const std::string& path, Progress& progress) {
    if (path.empty()) return {};
    if (IsSameFolder(path, settings_.GetTempFolder())) {
        KXP_LOG(KXP::LogMilestone, "Skipping temp path change as paths are the same");
    } else {
        if (!settings_.SetTempFolder(path)) return kUnusablePath;
        progress.changed = true;
        api_.NotifyGalleryTempFolderChange(path);
    }
    progress.parameterSeen = true;
    return {};
}

// Sends one notification when either value or both have changed.
void SettingsRequests::ApplyCapacity(const KXP::Value& capacity, Progress& progress) {
    ApplyCapEnabled(capacity, progress);
    if (ApplyCapPercent(capacity, progress) || !progress.capacitySkip) {
        api_.NotifyGalleryCapStateChange();
    } else {
        KXP_LOG(KXP::LogMilestone, "Skipping capacity notification");
    }
}

void SettingsRequests::ApplyCapEnabled(const KXP::Value& capacity, Progress& progress) {
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

// True when the percentage has changed.
bool SettingsRequests::ApplyCapPercent(const KXP::Value& capacity, Progress& progress) {
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

KXP::RetVal SettingsRequests::Save(const Progress& progress) {
    if (!progress.changed)
        return {KXP::Code::kOk, "No action taken as all provided values are the same as existing ones", 0};
    if (!progress.parameterSeen)
        return {kInvalidArgument, "At least path or one parameter in \"capacity\" object must be defined", 0};
    return WriteSettings();
}

KXP::RetVal SettingsRequests::WriteSettings() {
    if (settings_.WriteSettings()) return {};
    return {KXP::Code::kFailure, "Failed to save settings to disk", 0};
}

KXP::RetVal SettingsRequests::CheckDiskSpace(std::unique_ptr<KXP::JSONMessage>, KXP::Value& response,
                                             KXP::Allocator& allocator) {
    api_.AssertOnWorker();
    response.AddMember("lowDiskSpace", api_.CheckLowDiskSpace(), allocator);
    return {};
}
