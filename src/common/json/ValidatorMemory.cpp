#include "common/json/ValidatorMemory.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>

#include "base/SlabMemory.h"

namespace KXP {

ValidatorMemory::~ValidatorMemory() {
    for (Header* header : freed_) {
        while (header) {
            Header* const next = header->nextFreed;
            if (!IsWithin(header)) FreeInSlab(header);
            header = next;
        }
    }
}

void* ValidatorMemory::Malloc(size_t size) {
    if (size == 0) return nullptr;
    size_t index = 0;
    while (index < kSizes && kLeast << index < size)
        ++index;
    if (index == kSizes) return new (AllocateInSlab(sizeof(Header) + size)) Header{nullptr} + 1;
    Header* header = freed_[index];
    if (header) {
        freed_[index] = header->nextFreed;
    } else {
        header = Fresh(sizeof(Header) + (kLeast << index));
        header->size = index;
    }
    return header + 1;
}

ValidatorMemory::Header* ValidatorMemory::Fresh(size_t bytes) {
    if (kFirstBytes - taken_ < bytes) return new (AllocateInSlab(bytes)) Header{this};
    char* const place = first_ + taken_;
    taken_ += bytes;
    return new (place) Header{this};
}

void* ValidatorMemory::Realloc(void* block, size_t oldSize, size_t size) {
    void* const other = Malloc(size);
    if (block && other) std::memcpy(other, block, std::min(oldSize, size));
    Free(block);
    return other;
}

void ValidatorMemory::Free(void* block) noexcept {
    if (!block) return;
    Header* const header = static_cast<Header*>(block) - 1;
    if (!header->owner) return FreeInSlab(header);
    Header*& freed = header->owner->freed_[header->size];
    header->nextFreed = freed;
    freed = header;
}

bool ValidatorMemory::IsWithin(const Header* header) const {
    const char* const place = reinterpret_cast<const char*>(header);
    return !std::less<>()(place, first_) && std::less<>()(place, first_ + kFirstBytes);
}

}  // namespace KXP
