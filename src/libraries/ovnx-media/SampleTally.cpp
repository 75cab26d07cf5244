#include "libraries/ovnx-media/SampleTally.h"

#include <algorithm>
#include <cstring>

#include "libraries/media-bytes/ByteView.h"

namespace ovnxmedia {
namespace {

constexpr auto Number = media::_getU32BigEndianFromBytes;

bool IsType(const uint8_t* bytes, const char* type) {
    return std::memcmp(bytes, type, 4) == 0;
}

// The samples that the table at `bytes` declares; 0 where there is no table, or one that lists each sample
// and so is no shorter than what it declares.
uint64_t Promised(const uint8_t* bytes) {
    if (IsType(bytes, "stsz") && Number(bytes + 8) != 0) return Number(bytes + 12);
    if (IsType(bytes, "trun")) return Number(bytes + 8);
    // A compressed head could hide its tables; nobody has written one for twenty years.
    if (IsType(bytes, "cmov")) return SampleTally::kLimit + 1;
    return 0;
}

}  // namespace

void SampleTally::Look(const uint8_t* bytes, size_t size) {
    if (size < kWindow) return;
    const uint8_t* const end = bytes + size - kWindow + 1;
    for (const uint8_t* at = bytes; at < end; ++at)
        if ((*at == 's' || *at == 't' || *at == 'c')) samples_ += Promised(at);
}

bool SampleTally::Take(uint64_t position, const uint8_t* bytes, size_t size) {
    if (position != next_) kept_ = 0;
    next_ = position + size;
    // Each window is looked at once: those that begin in what was kept, then those within the piece.
    const size_t first = std::min(size, kWindow - 1);
    std::memcpy(seam_ + kept_, bytes, first);
    Look(seam_, kept_ + first);
    Look(bytes, size);
    if (size >= kWindow - 1) {
        kept_ = kWindow - 1;
        std::memcpy(seam_, bytes + size - kept_, kept_);
    } else {
        const size_t total = kept_ + first;
        const size_t drop = total - std::min(total, kWindow - 1);
        std::memmove(seam_, seam_ + drop, total - drop);
        kept_ = total - drop;
    }
    return samples_ <= kLimit;
}

}  // namespace ovnxmedia
