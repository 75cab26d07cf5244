#include "plugin-modules/Gallery/src/thumbnails/DecoderSlots.h"

bool DecoderSlots::Take(const std::atomic<bool>& cancelled) {
    const KXP::MutexLock lock(mutex_);
    while (taken_ == kCount && !cancelled)
        changed_.Wait(mutex_);
    if (cancelled) return false;
    ++taken_;
    return true;
}

void DecoderSlots::Free() {
    const KXP::MutexLock lock(mutex_);
    --taken_;
    changed_.NotifyAll();
}

void DecoderSlots::Cancel(std::atomic<bool>& cancelled) {
    // Set under the lock: between its look at `cancelled` and its wait, Take would miss the notification.
    const KXP::MutexLock lock(mutex_);
    cancelled = true;
    changed_.NotifyAll();
}
