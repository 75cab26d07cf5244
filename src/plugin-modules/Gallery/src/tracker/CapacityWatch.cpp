#include "plugin-modules/Gallery/src/tracker/CapacityWatch.h"

#include <chrono>

#include "CobalixUtil.h"
#include "common/results/Exception.h"

namespace {

constexpr std::chrono::seconds kDiskCheckPeriod{60};
constexpr std::chrono::seconds kGalleryFullDelay{8};

}  // namespace

void CapacityWatch::UpdateGalleryUsage(uint32_t usageKB) {
    host_.UpdateGalleryUsage(usageKB / 1000);
    const Settings& settings = *host_.GetGallerySettings();
    const Crossing crossing =
        Cross(settings.GetCurrentSizeMB(), settings.GetTotalDiskSpaceMB(), settings.GetMaxSizePercent());
    if (crossing == Crossing::None || !settings.GetCapEnabled()) return;
    const bool full = crossing == Crossing::Reached;
    queue_.EnqueueNotification(queue_.Now() + kGalleryFullDelay,
                               [this, full] { host_.NotifyGalleryIsFull(full); });
}

// In 32-bit arithmetic, like the figures that pages get. A volume of size 0 counts as not measured.
CapacityWatch::Crossing CapacityWatch::Cross(uint32_t usageMB, uint32_t totalMB, uint32_t maxPercent) {
    const uint32_t percent = totalMB == 0 ? 0 : usageMB * 100 / totalMB;
    const KXP::MutexLock lock(mutex_);
    if (capNotifyArmed_ == (percent < maxPercent)) return Crossing::None;
    capNotifyArmed_ = !capNotifyArmed_;
    return capNotifyArmed_ ? Crossing::FellBelow : Crossing::Reached;
}

void CapacityWatch::MonitorDiskSpace() {
    queue_.EnqueueNotification(queue_.Now() + kDiskCheckPeriod, [this] { CheckDiskSpace(); });
}

void CapacityWatch::CheckDiskSpace() {
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
