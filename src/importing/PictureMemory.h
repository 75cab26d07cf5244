// Memory that the pictures of an import share one after the other: each is read once, in one piece.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "base/FileDescriptor.h"
#include "base/SlabMemory.h"

namespace importing {

class PictureMemory {
  public:
    // The whole file, until the next call. Empty for one that is too large, or cannot be read in full.
    std::string_view Read(const KXP::FileDescriptor& file, uint64_t size);

  private:
    std::unique_ptr<char[], KXP::SlabDeleter> bytes_;
    size_t capacity_ = 0;
};

}  // namespace importing
