#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/uio.h>
#include <unistd.h>

#include "tests/faults/Faults.h"

extern "C" void* __libc_malloc(size_t size) noexcept;

namespace {

enum Call : size_t {
    kOpen,
    kOpenAt,
    kFdOpenDir,
    kReadDir,
    kStat,
    kLstat,
    kFstat,
    kFstatAt,
    kStatx,
    kStatFs,
    kAccess,
    kReadLink,
    kRealPath,
    kRead,
    kPread,
    kWrite,
    kPwrite,
    kPwritev,
    kCopyRange,
    kFsync,
    kFdatasync,
    kFtruncate,
    kReserve,
    kFcntl,
    kFlock,
    kFchmodAt,
    kMkdir,
    kMkdirAt,
    kRename,
    kRenameAt,
    kRenameAt2,
    kLinkAt,
    kUnlink,
    kUnlinkAt,
    kRemove,
    kInotifyInit,
    kInotifyAddWatch,
    kEventFd,
    kPipe,
    kSpawn,
    kThread,
    kMalloc,
    kNew,
    kCalls
};

// No ENOENT for what looks: it says that a file is gone, and the product may believe it.
constexpr faults::Kind kKinds[kCalls] = {
    {"open", {EMFILE, EIO, EACCES, ENOSPC}},
    {"openat", {EMFILE, EIO, EACCES, ENOSPC}},
    {"fdopendir", {ENOMEM}},
    {"readdir", {EIO}},
    {"stat", {EIO, EACCES, ENOMEM}},
    {"lstat", {EIO, EACCES, ENOMEM}},
    {"fstat", {EIO, ENOMEM}},
    {"fstatat", {EIO, EACCES, ENOMEM}},
    {"statx", {EIO, EACCES, ENOMEM}},
    {"statfs", {EIO, EACCES}},
    {"access", {EIO, EACCES}},
    {"readlink", {EIO, EINVAL}},
    {"realpath", {EIO, EACCES}},
    {"read", {EIO, EINTR, faults::kShort}},
    {"pread", {EIO, EINTR, faults::kShort}},
    {"write", {ENOSPC, EIO, EINTR, faults::kShort}},
    {"pwrite", {ENOSPC, EIO, EINTR, faults::kShort}},
    {"pwritev", {ENOSPC, EIO, EINTR, faults::kShort}},
    {"copy_file_range", {ENOSPC, EIO, EXDEV, faults::kShort}},
    {"fsync", {EIO, ENOSPC}},
    {"fdatasync", {EIO, ENOSPC}},
    {"ftruncate", {EIO, ENOSPC}},
    {"posix_fallocate", {ENOSPC, EIO, EINTR}},
    {"fcntl", {ENOLCK, EIO}},
    {"flock", {ENOLCK, EINTR, EWOULDBLOCK}},
    {"fchmodat", {EPERM, EIO}},
    {"mkdir", {ENOSPC, EACCES, EIO}},
    {"mkdirat", {ENOSPC, EACCES, EIO}},
    {"rename", {EIO, ENOSPC, EACCES}},
    {"renameat", {EIO, ENOSPC, EXDEV}},
    {"renameat2", {EIO, ENOSPC, EINVAL, EXDEV}},
    {"linkat", {EIO, EPERM, EMLINK}},
    {"unlink", {EIO, EACCES}},
    {"unlinkat", {EIO, EACCES}},
    {"remove", {EIO, EACCES}},
    {"inotify_init1", {EMFILE, ENOMEM}},
    {"inotify_add_watch", {ENOSPC, ENOMEM, EACCES}},
    {"eventfd", {EMFILE, ENOMEM}},
    {"pipe", {EMFILE, ENFILE}},
    {"posix_spawn", {EAGAIN, ENOMEM}},
    {"thread", {EAGAIN}},
    {"malloc", {ENOMEM}},
    {"new", {ENOMEM}},
};

struct Range {
    uintptr_t from;
    uintptr_t to;
};

std::atomic<bool> g_armed{false};
std::atomic<bool> g_fired{false};
size_t g_kind;
long g_nth;
int g_error;
std::array<std::atomic<long>, kCalls> g_calls;
std::array<std::atomic<void*>, kCalls> g_real;
Range g_program;
std::array<Range, 8> g_product;
size_t g_products;

int TakeRange(dl_phdr_info* info, size_t /*size*/, void* /*unused*/) {
    Range range{UINTPTR_MAX, 0};
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& header = info->dlpi_phdr[i];
        if (header.p_type != PT_LOAD) continue;
        range.from = std::min(range.from, info->dlpi_addr + header.p_vaddr);
        range.to = std::max(range.to, info->dlpi_addr + header.p_vaddr + header.p_memsz);
    }
    if (info->dlpi_name[0] == '\0' && g_program.to == 0) g_program = range;
    for (const char* name : {"libGallery.so", "libCobalixUtil.so", "libovnx"})
        if (std::strstr(info->dlpi_name, name) && g_products < g_product.size())
            g_product[g_products++] = range;
    return 0;
}

bool Holds(const Range& range, const void* caller) {
    const auto address = reinterpret_cast<uintptr_t>(caller);
    return address >= range.from && address < range.to;
}

// Memory fails for the product alone: the libraries that it uses have promises of their own.
bool Counts(size_t call, const void* caller) {
    if (call < kMalloc) return !Holds(g_program, caller);
    for (size_t i = 0; i < g_products; ++i)
        if (Holds(g_product[i], caller)) return true;
    return false;
}

// The error that this call fails with, or 0.
int ErrorOf(size_t call, const void* caller) {
    if (!g_armed.load(std::memory_order_acquire) || !Counts(call, caller)) return 0;
    const long number = ++g_calls[call];
    if (call != g_kind || number != g_nth) return 0;
    if (g_error == faults::kKill) (void)kill(getpid(), SIGKILL);
    g_fired = true;
    return g_error;
}

template <typename Function>
Function* Real(size_t call, const char* name) {
    void* real = g_real[call];
    if (!real) g_real[call] = real = dlsym(RTLD_NEXT, name);
    return reinterpret_cast<Function*>(real);
}

template <typename Function, typename Result, typename... Arguments>
Result Pass(size_t call, const char* name, const void* caller, Result failure, Arguments... arguments) {
    auto* const real = Real<Function>(call, name);
    const int error = ErrorOf(call, caller);
    if (error <= 0) return real(arguments...);
    errno = error;
    return failure;
}

// Reads and writes, of which a short one takes half.
template <typename Function, typename Buffer, typename... Where>
ssize_t PassBytes(size_t call, const char* name, const void* caller, int fd, Buffer buffer, size_t size,
                  Where... where) {
    auto* const real = Real<Function>(call, name);
    const int error = ErrorOf(call, caller);
    if (error == faults::kShort) return real(fd, buffer, (size + 1) / 2, where...);
    if (error == 0) return real(fd, buffer, size, where...);
    errno = error;
    return -1;
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

void* Allocate(size_t size, const void* caller) {
    void* const memory = ErrorOf(kNew, caller) == 0 ? __libc_malloc(size) : nullptr;
    if (!memory) throw std::bad_alloc();
    return memory;
}

constexpr faults::Control kControl{kKinds, kCalls, Arm, Disarm, CallsOf};

}  // namespace

// The names and forms are those of the C library, where a function may have the name of a structure.
// NOLINTBEGIN
#pragma GCC diagnostic ignored "-Wshadow"
#define CALLER __builtin_return_address(0)

extern "C" {

__attribute__((visibility("default"))) const faults::Control* FaultsControl() {
    return &kControl;
}

int open(const char* path, int flags, ...) {
    va_list list;
    va_start(list, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(list, mode_t) : 0;
    va_end(list);
    return Pass<int(const char*, int, ...)>(kOpen, "open", CALLER, -1, path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
    va_list list;
    va_start(list, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(list, mode_t) : 0;
    va_end(list);
    return Pass<int(int, const char*, int, ...)>(kOpenAt, "openat", CALLER, -1, folder, path, flags, mode);
}
DIR* fdopendir(int fd) {
    return Pass<DIR*(int)>(kFdOpenDir, "fdopendir", CALLER, static_cast<DIR*>(nullptr), fd);
}
dirent* readdir(DIR* folder) {
    return Pass<dirent*(DIR*)>(kReadDir, "readdir", CALLER, static_cast<dirent*>(nullptr), folder);
}
int stat(const char* path, struct stat* out) noexcept {
    return Pass<int(const char*, struct stat*)>(kStat, "stat", CALLER, -1, path, out);
}
int lstat(const char* path, struct stat* out) noexcept {
    return Pass<int(const char*, struct stat*)>(kLstat, "lstat", CALLER, -1, path, out);
}
int fstat(int fd, struct stat* out) noexcept {
    return Pass<int(int, struct stat*)>(kFstat, "fstat", CALLER, -1, fd, out);
}
int fstatat(int folder, const char* path, struct stat* out, int flags) noexcept {
    return Pass<int(int, const char*, struct stat*, int)>(kFstatAt, "fstatat", CALLER, -1, folder, path, out,
                                                          flags);
}
int statx(int folder, const char* path, int flags, unsigned mask, struct statx* out) noexcept {
    return Pass<int(int, const char*, int, unsigned, struct statx*)>(kStatx, "statx", CALLER, -1, folder,
                                                                     path, flags, mask, out);
}
int statfs(const char* path, struct statfs* out) noexcept {
    return Pass<int(const char*, struct statfs*)>(kStatFs, "statfs", CALLER, -1, path, out);
}
int access(const char* path, int mode) noexcept {
    return Pass<int(const char*, int)>(kAccess, "access", CALLER, -1, path, mode);
}
ssize_t readlink(const char* path, char* out, size_t size) noexcept {
    return Pass<ssize_t(const char*, char*, size_t)>(kReadLink, "readlink", CALLER, ssize_t{-1}, path, out,
                                                     size);
}
char* realpath(const char* path, char* out) noexcept {
    return Pass<char*(const char*, char*)>(kRealPath, "realpath", CALLER, static_cast<char*>(nullptr), path,
                                           out);
}
ssize_t read(int fd, void* out, size_t size) {
    return PassBytes<ssize_t(int, void*, size_t)>(kRead, "read", CALLER, fd, out, size);
}
ssize_t pread(int fd, void* out, size_t size, off_t at) {
    return PassBytes<ssize_t(int, void*, size_t, off_t)>(kPread, "pread", CALLER, fd, out, size, at);
}
ssize_t write(int fd, const void* bytes, size_t size) {
    return PassBytes<ssize_t(int, const void*, size_t)>(kWrite, "write", CALLER, fd, bytes, size);
}
ssize_t pwrite(int fd, const void* bytes, size_t size, off_t at) {
    return PassBytes<ssize_t(int, const void*, size_t, off_t)>(kPwrite, "pwrite", CALLER, fd, bytes, size,
                                                               at);
}
ssize_t pwritev(int fd, const iovec* parts, int count, off_t at) {
    auto* const real = Real<ssize_t(int, const iovec*, int, off_t)>(kPwritev, "pwritev");
    const int error = ErrorOf(kPwritev, CALLER);
    if (error == faults::kShort) return real(fd, parts, (count + 1) / 2, at);
    if (error == 0) return real(fd, parts, count, at);
    errno = error;
    return -1;
}
ssize_t copy_file_range(int from, off64_t* fromAt, int to, off64_t* toAt, size_t size, unsigned flags) {
    auto* const real =
        Real<ssize_t(int, off64_t*, int, off64_t*, size_t, unsigned)>(kCopyRange, "copy_file_range");
    const int error = ErrorOf(kCopyRange, CALLER);
    if (error <= 0) return real(from, fromAt, to, toAt, error == 0 ? size : 1, flags);
    errno = error;
    return -1;
}
int fsync(int fd) {
    return Pass<int(int)>(kFsync, "fsync", CALLER, -1, fd);
}
int fdatasync(int fd) {
    return Pass<int(int)>(kFdatasync, "fdatasync", CALLER, -1, fd);
}
int ftruncate(int fd, off_t size) noexcept {
    return Pass<int(int, off_t)>(kFtruncate, "ftruncate", CALLER, -1, fd, size);
}
int posix_fallocate(int fd, off_t from, off_t size) {
    auto* const real = Real<int(int, off_t, off_t)>(kReserve, "posix_fallocate");
    const int error = ErrorOf(kReserve, CALLER);
    return error > 0 ? error : real(fd, from, size);
}
int fcntl(int fd, int command, ...) {
    va_list list;
    va_start(list, command);
    void* const argument = va_arg(list, void*);
    va_end(list);
    return Pass<int(int, int, ...)>(kFcntl, "fcntl", CALLER, -1, fd, command, argument);
}
int flock(int fd, int operation) noexcept {
    return Pass<int(int, int)>(kFlock, "flock", CALLER, -1, fd, operation);
}
int fchmodat(int folder, const char* path, mode_t mode, int flags) noexcept {
    return Pass<int(int, const char*, mode_t, int)>(kFchmodAt, "fchmodat", CALLER, -1, folder, path, mode,
                                                    flags);
}
int mkdir(const char* path, mode_t mode) noexcept {
    return Pass<int(const char*, mode_t)>(kMkdir, "mkdir", CALLER, -1, path, mode);
}
int mkdirat(int folder, const char* path, mode_t mode) noexcept {
    return Pass<int(int, const char*, mode_t)>(kMkdirAt, "mkdirat", CALLER, -1, folder, path, mode);
}
int rename(const char* from, const char* to) noexcept {
    return Pass<int(const char*, const char*)>(kRename, "rename", CALLER, -1, from, to);
}
int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    return Pass<int(int, const char*, int, const char*)>(kRenameAt, "renameat", CALLER, -1, fromFolder, from,
                                                         toFolder, to);
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    return Pass<int(int, const char*, int, const char*, unsigned)>(kRenameAt2, "renameat2", CALLER, -1,
                                                                   fromFolder, from, toFolder, to, flags);
}
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return Pass<int(int, const char*, int, const char*, int)>(kLinkAt, "linkat", CALLER, -1, fromFolder, from,
                                                              toFolder, to, flags);
}
int unlink(const char* path) noexcept {
    return Pass<int(const char*)>(kUnlink, "unlink", CALLER, -1, path);
}
int unlinkat(int folder, const char* path, int flags) noexcept {
    return Pass<int(int, const char*, int)>(kUnlinkAt, "unlinkat", CALLER, -1, folder, path, flags);
}
int remove(const char* path) noexcept {
    return Pass<int(const char*)>(kRemove, "remove", CALLER, -1, path);
}
int inotify_init1(int flags) noexcept {
    return Pass<int(int)>(kInotifyInit, "inotify_init1", CALLER, -1, flags);
}
int inotify_add_watch(int fd, const char* path, uint32_t mask) noexcept {
    return Pass<int(int, const char*, uint32_t)>(kInotifyAddWatch, "inotify_add_watch", CALLER, -1, fd, path,
                                                 mask);
}
int eventfd(unsigned value, int flags) noexcept {
    return Pass<int(unsigned, int)>(kEventFd, "eventfd", CALLER, -1, value, flags);
}
int pipe(int* ends) noexcept {
    return Pass<int(int*)>(kPipe, "pipe", CALLER, -1, ends);
}
int posix_spawn(pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,
                const posix_spawnattr_t* how, char* const* arguments, char* const* environment) {
    auto* const real = Real<decltype(posix_spawn)>(kSpawn, "posix_spawn");
    const int error = ErrorOf(kSpawn, CALLER);
    return error > 0 ? error : real(pid, path, actions, how, arguments, environment);
}
int pthread_create(pthread_t* thread, const pthread_attr_t* how, void* (*run)(void*),
                   void* argument) noexcept {
    auto* const real = Real<decltype(pthread_create)>(kThread, "pthread_create");
    const int error = ErrorOf(kThread, CALLER);
    return error > 0 ? error : real(thread, how, run, argument);
}
void* malloc(size_t size) noexcept {
    if (ErrorOf(kMalloc, CALLER) == 0) return __libc_malloc(size);
    errno = ENOMEM;
    return nullptr;
}

}  // extern "C"

void* operator new(size_t size) {
    return Allocate(size, CALLER);
}
void* operator new[](size_t size) {
    return Allocate(size, CALLER);
}
void* operator new(size_t size, const std::nothrow_t& /*unused*/) noexcept {
    return ErrorOf(kNew, CALLER) == 0 ? __libc_malloc(size) : nullptr;
}
// NOLINTEND
