// How many thumbnails are made at once: a decoder may need 256 MiB and a whole processor.
#pragma once

#include <atomic>

#include "common/threads/Mutex.h"

// All calls from any thread.
class DecoderSlots {
  public:
    static constexpr unsigned kCount = 2;

    // Waits for a free slot. False, without one, once `cancelled` is set.
    bool Take(const std::atomic<bool>& cancelled) EXCLUDES(mutex_);
    void Free() EXCLUDES(mutex_);

    // Sets `cancelled` and ends the Take that waits with it.
    void Cancel(std::atomic<bool>& cancelled) EXCLUDES(mutex_);

  private:
    KXP::Mutex mutex_;
    KXP::CondVar changed_;
    unsigned taken_ GUARDED_BY(mutex_) = 0;
};
