// The memory functions that the codecs find, and nobody else: this library is opened in a symbol scope of its
// own, and theirs are looked up here before the C library. A decoder takes tens of megabytes for one picture,
// and each thread that has run one would keep them in its part of the heap. So large blocks are mapped, and
// go back to the system with the picture. All others are of the process's heap, which is the container's
// where it has one of its own: what the C library allocates for the codecs, a line that was read for
// instance, comes from there, and they free it here.
#include "libraries/ovnx-media/CodecMemory.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>

#include <dlfcn.h>
#include <malloc.h>
#include <sys/random.h>

#include "base/Mapping.h"
#include "libraries/ovnx-media/linux/MappingPool.h"

#ifdef GALLERY_SANITIZED  // the sanitizers' own functions are to be found

ovnxmedia::CodecMemoryUse::CodecMemoryUse(size_t) noexcept {}
ovnxmedia::CodecMemoryUse::~CodecMemoryUse() = default;

#else

// NOLINTBEGIN(bugprone-reserved-identifier): the names of the C library's own.
extern "C" {
void* __libc_malloc(size_t size) noexcept;
void* __libc_calloc(size_t count, size_t size) noexcept;
void* __libc_realloc(void* block, size_t size) noexcept;
void* __libc_memalign(size_t alignment, size_t size) noexcept;
void __libc_free(void* block) noexcept;
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

// The functions that the rest of the process has.
struct Heap {
    decltype(&malloc) allocate;
    decltype(&calloc) allocateZeros;
    decltype(&realloc) resize;
    decltype(&memalign) allocateAligned;
    decltype(&free) release;
    decltype(&malloc_usable_size) usableSize;
};

// A program that links this library has these functions for all of itself.
template <typename Function>
Function Find(void* program, const char* name, Function own, Function libc) {
    auto* const found = reinterpret_cast<Function>(dlsym(program, name));
    return found && found != own ? found : libc;
}

Heap FindHeap() {
    void* const program = dlopen(nullptr, RTLD_LAZY);
    auto* const usableSize =
        reinterpret_cast<decltype(&malloc_usable_size)>(dlsym(RTLD_NEXT, "malloc_usable_size"));
    return {Find(program, "malloc", &malloc, &__libc_malloc),
            Find(program, "calloc", &calloc, &__libc_calloc),
            Find(program, "realloc", &realloc, &__libc_realloc),
            Find(program, "memalign", &memalign, &__libc_memalign),
            Find(program, "free", &free, &__libc_free),
            Find(program, "malloc_usable_size", &malloc_usable_size, usableSize)};
}

const Heap& ProcessHeap() {
    static const Heap heap = FindHeap();
    return heap;
}

namespace Platform = KXP::Platform;
using Mapping = ovnxmedia::MappingPool::Mapping;

constexpr size_t kPage = size_t{4} << 10;
constexpr size_t kLarge = size_t{32} << 10;

// Before each mapped block, which begins at the second page of its mapping.
struct Mark {
    uint64_t secret;
    const void* block;
    size_t size;
    size_t mapped;
};

// Never destroyed: others free memory until the process ends.
ovnxmedia::MappingPool& Pool() {
    alignas(ovnxmedia::MappingPool) static char place[sizeof(ovnxmedia::MappingPool)];
    static auto* const pool = new (place) ovnxmedia::MappingPool;
    return *pool;
}

uint64_t MakeSecret() {
    uint64_t secret = 0;
    if (getrandom(&secret, sizeof secret, GRND_NONBLOCK) != sizeof secret)
        secret = reinterpret_cast<uintptr_t>(&secret) * 0x9E3779B97F4A7C15U;
    return secret;
}

// Never the content of a block by chance.
uint64_t Secret() {
    static const uint64_t secret = MakeSecret();
    return secret;
}

bool IsLarge(size_t size) {
    return size >= kLarge && size <= PTRDIFF_MAX - 2 * kPage;
}

size_t MappingFor(size_t size) {
    return kPage + (size + kPage - 1) / kPage * kPage;
}

void* Finish(void* mapping, size_t size, size_t mapped) {
    if (!mapping) {
        errno = ENOMEM;
        return nullptr;
    }
    char* const block = static_cast<char*>(mapping) + kPage;
    *(reinterpret_cast<Mark*>(block) - 1) = {Secret(), block, size, mapped};
    return block;
}

enum class Content { Any, Zeros };

void* MapBlock(size_t size, Content content) {
    const size_t mapped = MappingFor(size);
    const Mapping reused = Pool().Take(mapped);
    if (!reused.place) return Finish(Platform::Map(mapped), size, mapped);
    void* const block = Finish(reused.place, size, reused.bytes);
    return content == Content::Zeros ? std::memset(block, 0, size) : block;
}

// Null for a block of the heap. Before any block there is a header of its allocator, so that the bytes
// can be read.
const Mark* MarkOf(const void* block) {
    if (!block || reinterpret_cast<uintptr_t>(block) % kPage != 0) return nullptr;
    const Mark* const mark = static_cast<const Mark*>(block) - 1;
    return mark->secret == Secret() && mark->block == block ? mark : nullptr;
}

void UnmapBlock(void* block, const Mark& mark) {
    Pool().Free({static_cast<char*>(block) - kPage, mark.mapped});
}

void* ResizeBlock(void* block, const Mark& mark, size_t size) {
    if (IsLarge(size)) {
        const size_t mapped = MappingFor(size);
        return Finish(Platform::ResizeMapping(static_cast<char*>(block) - kPage, mark.mapped, mapped), size,
                      mapped);
    }
    void* const moved = size > 0 ? ProcessHeap().allocate(size) : nullptr;
    if (moved) std::memcpy(moved, block, std::min(mark.size, size));
    if (moved || size == 0) UnmapBlock(block, mark);
    return moved;
}

}  // namespace

ovnxmedia::CodecMemoryUse::CodecMemoryUse(size_t most) noexcept {
    Pool().AddUser(most);
}

ovnxmedia::CodecMemoryUse::~CodecMemoryUse() {
    Pool().RemoveUser();
}

extern "C" {

void* malloc(size_t size) noexcept {
    return IsLarge(size) ? MapBlock(size, Content::Any) : ProcessHeap().allocate(size);
}

void* calloc(size_t count, size_t size) noexcept {
    size_t bytes = 0;
    const bool fits = !__builtin_mul_overflow(count, size, &bytes);
    return fits && IsLarge(bytes) ? MapBlock(bytes, Content::Zeros)
                                  : ProcessHeap().allocateZeros(count, size);
}

void* realloc(void* block, size_t size) noexcept {
    if (!block) return malloc(size);
    const Mark* const mark = MarkOf(block);
    return mark ? ResizeBlock(block, *mark, size) : ProcessHeap().resize(block, size);
}

void* reallocarray(void* block, size_t count, size_t size) noexcept {
    size_t bytes = 0;
    if (!__builtin_mul_overflow(count, size, &bytes)) return realloc(block, bytes);
    errno = ENOMEM;
    return nullptr;
}

void free(void* block) noexcept {
    if (const Mark* const mark = MarkOf(block)) {
        UnmapBlock(block, *mark);
    } else {
        ProcessHeap().release(block);
    }
}

void* memalign(size_t alignment, size_t size) noexcept {
    return alignment <= kPage && IsLarge(size) ? MapBlock(size, Content::Any)
                                               : ProcessHeap().allocateAligned(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) noexcept {
    return memalign(alignment, size);
}

int posix_memalign(void** block, size_t alignment, size_t size) noexcept {
    if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0 || alignment == 0) return EINVAL;
    const int error = errno;  // which this function leaves
    void* const made = memalign(alignment, size);
    errno = error;
    if (!made) return ENOMEM;
    *block = made;
    return 0;
}

size_t malloc_usable_size(void* block) noexcept {
    const Mark* const mark = MarkOf(block);
    return mark ? mark->mapped - kPage : ProcessHeap().usableSize(block);
}
}

#endif
