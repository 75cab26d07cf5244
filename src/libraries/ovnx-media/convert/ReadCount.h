// Hands on what was read in large pieces.
#pragma once

#include <cstddef>
#include <cstdint>

#include "libraries/ovnx-media/convert/Convert.h"

namespace ovnxmedia {

class ReadCount {
  public:
    explicit ReadCount(const PacketListener& listener) : listener_(listener) {}

    void Add(uint64_t bytes) {
        bytes_ += bytes;
        if (bytes_ >= kPiece) Flush();
    }
    void Flush() {
        if (listener_.onRead) listener_.onRead(bytes_);
        bytes_ = 0;
    }

  private:
    static constexpr uint64_t kPiece = 1u << 20;

    const PacketListener& listener_;
    uint64_t bytes_ = 0;
};

}  // namespace ovnxmedia
