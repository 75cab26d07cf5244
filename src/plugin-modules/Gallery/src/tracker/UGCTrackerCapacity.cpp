// How much the gallery takes, and how much room is left.
#include <chrono>

#include "CobalixUtil.h"
#include "common/Exception.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

namespace {

constexpr std::chrono::seconds kDiskCheckPeriod{60};
constexpr std::chrono::seconds kGalleryFullDelay{8};

}  // namespace

void UGCTracker::UpdateGalleryUsage(uint32_t usageKB) {
    host_.UpdateGalleryUsage(usageKB / 1000);
    Settings& settings = *host_.GetGallerySettings();
    const CapCrossing crossing = capWatch_.Update(settings.GetCurrentSizeMB(), settings.GetTotalDiskSpaceMB(),
                                                  settings.GetMaxSizePercent());
    if (crossing == CapCrossing::None || !settings.GetCapEnabled()) return;
    const bool full = crossing == CapCrossing::Reached;
    queue_.EnqueueNotification(queue_.Now() + kGalleryFullDelay,
                               [this, full] { host_.NotifyGalleryIsFull(full); });
}

void UGCTracker::MonitorDiskSpace() {
    queue_.EnqueueNotification(queue_.Now() + kDiskCheckPeriod, [this] { CheckDiskSpace(); });
}

void UGCTracker::CheckDiskSpace() {
    queue_.AssertOnWorker();
    bool low = false;
    try {
        low = host_.CheckLowDiskSpace();
    } catch (...) {
        KXP_LOG(KXP::LogFailure, "MonitorDiskSpace: %s", KXP::ToStr(KXP::ExceptionToRetVal()).c_str());
    }
    KXP_LOG(KXP::LogMilestone, "MonitorDiskSpace: bLowDiskSpace:%d resetFlag:%d", low, lowDiskResetFlag_);
    if (low || lowDiskResetFlag_) {
        host_.NotifyDiskSpaceCondition(low);
        lowDiskResetFlag_ = low;
    }
    queue_.EnqueueNotification(queue_.Now(), [this] { MonitorDiskSpace(); });
}
