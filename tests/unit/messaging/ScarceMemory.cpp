#include "tests/unit/messaging/ScarceMemory.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr long kOff = std::numeric_limits<long>::max() / 2;
std::atomic<long> left{kOff};
std::atomic<bool> failsOn{false};
thread_local int spared = 0;

bool Fails() {
    if (spared > 0) return false;
    const long now = --left;
    return now == 0 || (now < 0 && failsOn);
}

}  // namespace

ScarceMemory::ScarceMemory(long nth, Fails which) {
    failsOn = which == Fails::AllFromThereOn;
    left = nth;
}
ScarceMemory::~ScarceMemory() {
    left = kOff;
}
bool ScarceMemory::HasFailed() const {
    return left <= 0;
}

SparedMemory::SparedMemory() {
    ++spared;
}
SparedMemory::~SparedMemory() {
    --spared;
}

// The names that the linker makes of malloc and realloc.
extern "C" {
void* RealMalloc(size_t size) __asm__("__real_malloc");
void* RealRealloc(void* block, size_t size) __asm__("__real_realloc");
void* ScarceMalloc(size_t size) __asm__("__wrap_malloc");
void* ScarceRealloc(void* block, size_t size) __asm__("__wrap_realloc");

void* ScarceMalloc(size_t size) {
    return Fails() ? nullptr : RealMalloc(size);
}
void* ScarceRealloc(void* block, size_t size) {
    return Fails() ? nullptr : RealRealloc(block, size);
}
}

void* operator new(size_t size) {
    void* const block = std::malloc(size > 0 ? size : 1);
    if (!block) throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, size_t) noexcept {
    std::free(block);
}
