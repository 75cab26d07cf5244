#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <new>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/uio.h>
#include <unistd.h>

#include "tests/faults/Faults.h"

extern "C" void* __libc_malloc(size_t size) noexcept;  // NOLINT(bugprone-reserved-identifier)

namespace {

struct Range {
    uintptr_t from = UINTPTR_MAX;
    uintptr_t to = 0;

    bool Holds(const void* address) const {
        const auto at = reinterpret_cast<uintptr_t>(address);
        return at >= from && at < to;
    }
};

constexpr size_t kMost = 64;
std::array<faults::Kind, kMost> g_kinds;
std::array<std::atomic<long>, kMost> g_calls;
size_t g_count = 0;
std::atomic<bool> g_armed{false};
std::atomic<bool> g_fired{false};
size_t g_kind;
long g_nth;
int g_error;
Range g_program;
std::array<Range, 8> g_product;
size_t g_products;

int TakeRange(dl_phdr_info* info, size_t /*size*/, void* /*unused*/) {
    Range range;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& header = info->dlpi_phdr[i];
        if (header.p_type != PT_LOAD) continue;
        range.from = std::min(range.from, info->dlpi_addr + header.p_vaddr);
        range.to = std::max(range.to, info->dlpi_addr + header.p_vaddr + header.p_memsz);
    }
    if (info->dlpi_name[0] == '\0' && g_program.to == 0) g_program = range;
    for (const char* name : {"libGallery.so", "libCobalix", "libovnx"})
        if (std::strstr(info->dlpi_name, name) && g_products < g_product.size())
            g_product[g_products++] = range;
    return 0;
}

// Whose calls may fail. Memory fails for the product alone: the libraries that it uses have promises of their
// own.
enum class Of { All, Product };

// A kind of call. What is called before it is made, is never armed.
class Slot {
  public:
    Slot(const char* name, std::initializer_list<int> errors, Of of = Of::All) : kind_(g_count++), of_(of) {
        g_kinds[kind_].name = name;
        std::copy(errors.begin(), errors.end(), g_kinds[kind_].errors);
    }

    // The error that this call fails with, or 0. Errors above 0 are in errno, too.
    int ErrorOf(const void* caller) const {
        if (!g_armed.load(std::memory_order_acquire) || !Counts(caller)) return 0;
        const long number = ++g_calls[kind_];
        if (kind_ != g_kind || number != g_nth) return 0;
        if (g_error == faults::kKill) (void)kill(getpid(), SIGKILL);
        g_fired = true;
        if (g_error > 0) errno = g_error;
        return g_error;
    }

  private:
    bool Counts(const void* caller) const {
        if (of_ == Of::All) return !g_program.Holds(caller);
        return std::any_of(g_product.begin(), g_product.begin() + g_products,
                           [caller](const Range& range) { return range.Holds(caller); });
    }

    const size_t kind_;
    const Of of_;
};

template <typename Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void Arm(size_t kind, long nth, int error) {
    g_program = {};
    g_products = 0;
    dl_iterate_phdr(TakeRange, nullptr);
    for (auto& calls : g_calls)
        calls = 0;
    g_kind = kind;
    g_nth = nth;
    g_error = error;
    g_fired = false;
    g_armed.store(true, std::memory_order_release);
}

bool Disarm() {
    g_armed = false;
    return g_fired;
}

long CallsOf(size_t kind) {
    return g_calls[kind];
}

mode_t ModeOf(int flags, va_list list) {
    return (flags & (O_CREAT | O_TMPFILE)) ? va_arg(list, mode_t) : 0;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) const faults::Control* FaultsControl() {
    static const faults::Control control{g_kinds.data(), g_count, Arm, Disarm, CallsOf};
    return &control;
}

// The names and forms are those of the C library, where a function may have the name of a structure.
// NOLINTBEGIN
#pragma GCC diagnostic ignored "-Wshadow"

#define CALLER __builtin_return_address(0)

// Defines a function that returns `failure` when it fails; the errors that fit come last. No ENOENT for what
// looks: it says that a file is gone, and the product may believe it.
#define FAILING(result, name, signature, arguments, failure, ...)         \
    static const Slot name##Slot(#name, {__VA_ARGS__});                   \
    extern "C" result name signature {                                    \
        static auto* const next = Next<decltype(name)>(#name);            \
        return name##Slot.ErrorOf(CALLER) > 0 ? failure : next arguments; \
    }
// The same for one that returns its error.
#define RETURNING(name, signature, arguments, ...)             \
    static const Slot name##Slot(#name, {__VA_ARGS__});        \
    extern "C" int name signature {                            \
        static auto* const next = Next<decltype(name)>(#name); \
        const int error = name##Slot.ErrorOf(CALLER);          \
        return error > 0 ? error : next arguments;             \
    }
// The same for one that moves `size` bytes, or half of them.
#define MOVING(name, signature, arguments, ...)                         \
    static const Slot name##Slot(#name, {__VA_ARGS__, faults::kShort}); \
    extern "C" ssize_t name signature {                                 \
        static auto* const next = Next<decltype(name)>(#name);          \
        const int error = name##Slot.ErrorOf(CALLER);                   \
        if (error == faults::kShort) size = (size + 1) / 2;             \
        return error > 0 ? -1 : next arguments;                         \
    }

static const Slot openSlot("open", {EMFILE, EIO, EACCES, ENOSPC});
extern "C" int open(const char* path, int flags, ...) {
    static auto* const next = Next<decltype(open)>("open");
    va_list list;
    va_start(list, flags);
    const mode_t mode = ModeOf(flags, list);
    va_end(list);
    return openSlot.ErrorOf(CALLER) > 0 ? -1 : next(path, flags, mode);
}
static const Slot openatSlot("openat", {EMFILE, EIO, EACCES, ENOSPC});
extern "C" int openat(int folder, const char* path, int flags, ...) {
    static auto* const next = Next<decltype(openat)>("openat");
    va_list list;
    va_start(list, flags);
    const mode_t mode = ModeOf(flags, list);
    va_end(list);
    return openatSlot.ErrorOf(CALLER) > 0 ? -1 : next(folder, path, flags, mode);
}
static const Slot fcntlSlot("fcntl", {ENOLCK, EIO});
extern "C" int fcntl(int fd, int command, ...) {
    static auto* const next = Next<decltype(fcntl)>("fcntl");
    va_list list;
    va_start(list, command);
    void* const argument = va_arg(list, void*);
    va_end(list);
    return fcntlSlot.ErrorOf(CALLER) > 0 ? -1 : next(fd, command, argument);
}

// clang-format off
FAILING(ssize_t, getdents64, (int fd, void* entries, size_t size) noexcept, (fd, entries, size), -1, EIO)
FAILING(int, stat, (const char* path, struct stat* out) noexcept, (path, out), -1, EIO, EACCES, ENOMEM)
FAILING(int, lstat, (const char* path, struct stat* out) noexcept, (path, out), -1, EIO, EACCES, ENOMEM)
FAILING(int, fstat, (int fd, struct stat* out) noexcept, (fd, out), -1, EIO, ENOMEM)
FAILING(int, fstatat, (int folder, const char* path, struct stat* out, int flags) noexcept,
        (folder, path, out, flags), -1, EIO, EACCES, ENOMEM)
FAILING(int, statx, (int folder, const char* path, int flags, unsigned mask, struct statx* out) noexcept,
        (folder, path, flags, mask, out), -1, EIO, EACCES, ENOMEM)
FAILING(int, statfs, (const char* path, struct statfs* out) noexcept, (path, out), -1, EIO, EACCES)
FAILING(int, access, (const char* path, int mode) noexcept, (path, mode), -1, EIO, EACCES)
FAILING(ssize_t, readlink, (const char* path, char* out, size_t size) noexcept, (path, out, size), -1, EIO, EINVAL)
FAILING(char*, realpath, (const char* path, char* out) noexcept, (path, out), nullptr, EIO, EACCES)
MOVING(read, (int fd, void* out, size_t size), (fd, out, size), EIO, EINTR)
MOVING(pread, (int fd, void* out, size_t size, off_t at), (fd, out, size, at), EIO, EINTR)
MOVING(write, (int fd, const void* bytes, size_t size), (fd, bytes, size), ENOSPC, EIO, EINTR)
MOVING(pwrite, (int fd, const void* bytes, size_t size, off_t at), (fd, bytes, size, at), ENOSPC, EIO, EINTR)
MOVING(pwritev, (int fd, const iovec* parts, int size, off_t at), (fd, parts, size, at), ENOSPC, EIO, EINTR)
MOVING(copy_file_range, (int from, off64_t* start, int to, off64_t* place, size_t size, unsigned flags),
       (from, start, to, place, size, flags), ENOSPC, EIO, EXDEV)
FAILING(int, fsync, (int fd), (fd), -1, EIO, ENOSPC)
FAILING(int, fdatasync, (int fd), (fd), -1, EIO, ENOSPC)
FAILING(int, ftruncate, (int fd, off_t size) noexcept, (fd, size), -1, EIO, ENOSPC)
RETURNING(posix_fallocate, (int fd, off_t from, off_t size), (fd, from, size), ENOSPC, EIO, EINTR)
FAILING(int, flock, (int fd, int operation) noexcept, (fd, operation), -1, ENOLCK, EINTR, EWOULDBLOCK)
FAILING(int, fchmodat, (int folder, const char* path, mode_t mode, int flags) noexcept,
        (folder, path, mode, flags), -1, EPERM, EIO)
FAILING(int, mkdir, (const char* path, mode_t mode) noexcept, (path, mode), -1, ENOSPC, EACCES, EIO)
FAILING(int, mkdirat, (int folder, const char* path, mode_t mode) noexcept, (folder, path, mode), -1, ENOSPC, EIO)
FAILING(int, rename, (const char* from, const char* to) noexcept, (from, to), -1, EIO, ENOSPC, EACCES)
FAILING(int, renameat, (int fromFolder, const char* from, int toFolder, const char* to) noexcept,
        (fromFolder, from, toFolder, to), -1, EIO, ENOSPC, EXDEV)
FAILING(int, renameat2, (int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept,
        (fromFolder, from, toFolder, to, flags), -1, EIO, ENOSPC, EINVAL, EXDEV)
FAILING(int, linkat, (int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept,
        (fromFolder, from, toFolder, to, flags), -1, EIO, EPERM, EMLINK)
FAILING(int, unlink, (const char* path) noexcept, (path), -1, EIO, EACCES)
FAILING(int, unlinkat, (int folder, const char* path, int flags) noexcept, (folder, path, flags), -1, EIO, EACCES)
FAILING(int, remove, (const char* path) noexcept, (path), -1, EIO, EACCES)
FAILING(int, inotify_init1, (int flags) noexcept, (flags), -1, EMFILE, ENOMEM)
FAILING(int, inotify_add_watch, (int fd, const char* path, uint32_t mask) noexcept, (fd, path, mask), -1,
        ENOSPC, ENOMEM, EACCES)
FAILING(int, eventfd, (unsigned value, int flags) noexcept, (value, flags), -1, EMFILE, ENOMEM)
FAILING(int, pipe, (int* ends) noexcept, (ends), -1, EMFILE, ENFILE)
RETURNING(posix_spawn, (pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,
                        const posix_spawnattr_t* how, char* const* arguments, char* const* environment),
          (pid, path, actions, how, arguments, environment), EAGAIN, ENOMEM)
RETURNING(pthread_create, (pthread_t* thread, const pthread_attr_t* how, void* (*run)(void*), void* data) noexcept,
          (thread, how, run, data), EAGAIN)
// clang-format on

static const Slot mallocSlot("malloc", {ENOMEM}, Of::Product);
extern "C" void* malloc(size_t size) noexcept {
    return mallocSlot.ErrorOf(CALLER) == 0 ? __libc_malloc(size) : nullptr;
}
static const Slot newSlot("new", {ENOMEM}, Of::Product);
void* operator new(size_t size, const std::nothrow_t& /*unused*/) noexcept {
    return newSlot.ErrorOf(CALLER) == 0 ? __libc_malloc(size) : nullptr;
}
static void* Allocate(size_t size, const void* caller) {
    void* const memory = newSlot.ErrorOf(caller) == 0 ? __libc_malloc(size) : nullptr;
    if (!memory) throw std::bad_alloc();
    return memory;
}
void* operator new(size_t size) {
    return Allocate(size, CALLER);
}
void* operator new[](size_t size) {
    return Allocate(size, CALLER);
}
// NOLINTEND
