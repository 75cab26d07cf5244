// Mappings that are free, for whoever needs one of about the same size next.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>

#include "base/Mapping.h"

namespace ovnxmedia {

// Allocates nothing, because allocations end here. Any thread.
class MappingPool {
  public:
    struct Mapping {
        void* place = nullptr;
        size_t bytes = 0;
    };

    // So many bytes are kept at most, or as many as another user lets it.
    void AddUser(size_t most) noexcept {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++users_;
        most_ = std::max(most_, most);
    }
    // Returns everything to the system with the last one.
    void RemoveUser() noexcept {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (--users_ > 0) return;
        for (Mapping& kept : kept_)
            Unmap(kept);
        bytes_ = 0;
        most_ = 0;
    }

    // One of `bytes` or somewhat more, with what was in it; without a place when there is none.
    Mapping Take(size_t bytes) noexcept {
        const std::lock_guard<std::mutex> lock(mutex_);
        for (Mapping& kept : kept_) {
            if (kept.bytes < bytes || kept.bytes - bytes > bytes / 4) continue;
            const Mapping taken = kept;
            kept = {};
            bytes_ -= taken.bytes;
            return taken;
        }
        return {};
    }

    void Free(Mapping mapping) noexcept {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (Keep(mapping)) return;
        }
        Unmap(mapping);
    }

  private:
    static void Unmap(Mapping& mapping) noexcept {
        if (mapping.place) KXP::Platform::Unmap(mapping.place, mapping.bytes);
        mapping = {};
    }

    bool Keep(Mapping mapping) noexcept {
        if (users_ == 0 || mapping.bytes > most_ - bytes_) return false;
        for (Mapping& kept : kept_) {
            if (kept.place) continue;
            kept = mapping;
            bytes_ += mapping.bytes;
            return true;
        }
        return false;
    }

    // A standard one: it may be taken under any other, and nothing is called under it but the system.
    std::mutex mutex_;
    std::array<Mapping, 64> kept_{};
    size_t bytes_ = 0;  // not more than most_
    size_t most_ = 0;
    int users_ = 0;
};

}  // namespace ovnxmedia
