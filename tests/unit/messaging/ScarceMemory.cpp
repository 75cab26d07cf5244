#include "tests/unit/messaging/ScarceMemory.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

// A sanitizer has its own operator new in this program, which cannot be replaced.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define HAS_SANITIZER 1
#endif
#endif

namespace {

#if defined(HAS_SANITIZER)
constexpr bool kNewIsTheSanitizers = true;
#else
constexpr bool kNewIsTheSanitizers = false;
#endif

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

// The names that the linker makes of these functions where this program's own code uses them.
extern "C" {
void* RealMalloc(size_t size) __asm__("__real_malloc");
void* RealRealloc(void* block, size_t size) __asm__("__real_realloc");
void* RealNew(size_t size) __asm__("__real__Znwm");
void* ScarceMalloc(size_t size) __asm__("__wrap_malloc");
void* ScarceRealloc(void* block, size_t size) __asm__("__wrap_realloc");
void* ScarceNew(size_t size) __asm__("__wrap__Znwm");
void* RealSlab(size_t size) __asm__("__real__ZN3KXP14AllocateInSlabEm");
void* RealSlabResize(void* block, size_t size) __asm__("__real__ZN3KXP12ResizeInSlabEPvm");
void* ScarceSlab(size_t size) __asm__("__wrap__ZN3KXP14AllocateInSlabEm");
void* ScarceSlabResize(void* block, size_t size) __asm__("__wrap__ZN3KXP12ResizeInSlabEPvm");

void* ScarceMalloc(size_t size) {
    return Fails() ? nullptr : RealMalloc(size);
}
void* ScarceRealloc(void* block, size_t size) {
    return Fails() ? nullptr : RealRealloc(block, size);
}
void* ScarceNew(size_t size) {
    if (kNewIsTheSanitizers && Fails()) throw std::bad_alloc();
    return RealNew(size);
}
void* ScarceSlab(size_t size) {
    if (Fails()) throw std::bad_alloc();
    return RealSlab(size);
}
void* ScarceSlabResize(void* block, size_t size) {
    if (Fails()) throw std::bad_alloc();
    return RealSlabResize(block, size);
}
}

// The standard library's own uses.
#if !defined(HAS_SANITIZER)
void* operator new(size_t size) {
    void* const block = Fails() ? nullptr : RealMalloc(size > 0 ? size : 1);
    if (!block) throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, size_t) noexcept {
    std::free(block);
}
#endif
