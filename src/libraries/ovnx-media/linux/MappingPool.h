// Mappings that are free, for whoever needs one of about the same size next.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>
#include <utility>

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

    // The smallest of `bytes` or somewhat more, with what was in it; without a place when there is none.
    Mapping Take(size_t bytes) noexcept {
        const size_t most = bytes + std::max(bytes / 4, kSpare);
        const std::lock_guard<std::mutex> lock(mutex_);
        Mapping* best = nullptr;
        for (Mapping& kept : kept_)
            if (kept.bytes >= bytes && kept.bytes <= most && (!best || kept.bytes < best->bytes))
                best = &kept;
        if (!best) return {};
        bytes_ -= best->bytes;
        return std::exchange(*best, {});
    }

    void Free(Mapping mapping) noexcept {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (!Keep(mapping)) ExchangeSmallest(mapping);
        }
        Unmap(mapping);
    }

  private:
    static void Unmap(Mapping& mapping) noexcept {
        if (mapping.place) KXP::Platform::Unmap(mapping.place, mapping.bytes);
        mapping = {};
    }

    bool Keep(Mapping& mapping) noexcept {
        if (users_ == 0 || mapping.bytes > most_ - bytes_) return false;
        for (Mapping& kept : kept_) {
            if (kept.place) continue;
            bytes_ += mapping.bytes;
            kept = std::exchange(mapping, {});
            return true;
        }
        return false;
    }

    // A larger one serves more requests; small ones would fill the pool, and nobody take them.
    void ExchangeSmallest(Mapping& mapping) noexcept {
        Mapping* smallest = nullptr;
        for (Mapping& kept : kept_)
            if (kept.place && (!smallest || kept.bytes < smallest->bytes)) smallest = &kept;
        if (users_ == 0 || !smallest || smallest->bytes >= mapping.bytes ||
            mapping.bytes - smallest->bytes > most_ - bytes_)
            return;
        bytes_ += mapping.bytes - smallest->bytes;
        std::swap(*smallest, mapping);
    }

    // The sizes of a video's packets differ.
    static constexpr size_t kSpare = size_t{1} << 20;

    // A standard one: it may be taken under any other, and nothing is called under it but the system.
    std::mutex mutex_;
    std::array<Mapping, 64> kept_{};
    size_t bytes_ = 0;  // not more than most_
    size_t most_ = 0;
    int users_ = 0;
};

}  // namespace ovnxmedia
