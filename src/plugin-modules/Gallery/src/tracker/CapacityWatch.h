// Watches how much of its share of the volume the gallery uses, and whether the volumes are nearly full.
#pragma once

#include <cstdint>

#include "common/task/TaskQueue.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/tracker/ITrackerHost.h"

// `queue` is the tracker's; its worker runs delayed notifications and checks. Both arguments outlive this
// object.
class CapacityWatch {
  public:
    CapacityWatch(ITrackerHost& host, KXP::TaskQueue& queue) : host_(host), queue_(queue) {}

    // Reports the usage to the host and, 8 seconds later, that it has crossed the cap, once for each
    // crossing. A crossing while the cap is off is never reported. Any thread, with no lock held.
    void UpdateGalleryUsage(uint32_t usageKB) EXCLUDES(mutex_);

    // Checks the volumes every 60 seconds from now on.
    void MonitorDiskSpace();

  private:
    enum class Crossing { None, Reached, FellBelow };
    Crossing Cross(uint32_t usageMB, uint32_t totalMB, uint32_t maxPercent) EXCLUDES(mutex_);
    void CheckDiskSpace();

    ITrackerHost& host_;
    KXP::TaskQueue& queue_;
    KXP::Mutex mutex_;
    bool capNotifyArmed_ GUARDED_BY(mutex_) = true;  // the usage was last below the cap
    bool lowDiskResetFlag_ = false;                  // used by the worker alone
};
