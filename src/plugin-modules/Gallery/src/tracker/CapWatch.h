// Whether the gallery has crossed the cap that the user set on its share of the volume.
#pragma once

#include <cstdint>

#include "common/Mutex.h"

enum class CapCrossing { None, Reached, FellBelow };

// Any thread. Its mutex is a leaf.
class CapWatch {
  public:
    // Sizes in MB, in the 32-bit arithmetic that the page's own figures come from. Each crossing is told once
    // in each direction, also while nobody is to hear of it. A volume of no size counts as not measured.
    CapCrossing Update(uint32_t usageMB, uint32_t totalMB, uint32_t maxPercent) EXCLUDES(mutex_) {
        const uint32_t percent = totalMB == 0 ? 0 : usageMB * 100 / totalMB;
        KXP::MutexLock lock(mutex_);
        if (armed_ == (percent < maxPercent)) return CapCrossing::None;
        armed_ = !armed_;
        return armed_ ? CapCrossing::FellBelow : CapCrossing::Reached;
    }

  private:
    KXP::Mutex mutex_;
    bool armed_ GUARDED_BY(mutex_) = true;  // below the cap, as far as is known
};
