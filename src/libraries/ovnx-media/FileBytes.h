// A whole file in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/SlabMemory.h"

namespace ovnxmedia {

struct FileBytes {
    std::unique_ptr<uint8_t[], KXP::SlabDeleter> bytes;
    size_t size = 0;

    // Makes room for `capacity` bytes; those that are there stay. Throws std::bad_alloc.
    void Reserve(size_t capacity) {
        auto* const moved = static_cast<uint8_t*>(KXP::ResizeInSlab(bytes.get(), capacity));
        (void)bytes.release();
        bytes.reset(moved);
    }
};

}  // namespace ovnxmedia
