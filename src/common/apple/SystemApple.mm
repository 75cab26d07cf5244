#include <cerrno>

#import <Foundation/Foundation.h>
#include <fcntl.h>
#include <sys/event.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/System.h"

namespace KXP {
namespace {

std::string TextOf(NSString* text) {
    return text ? text.UTF8String : "";
}

}  // namespace

std::string GetOsVersion() {
    @autoreleasepool {
        NSURL* file = [NSURL fileURLWithPath:@"/System/Library/CoreServices/SystemVersion.plist"];
        NSDictionary* properties = [NSDictionary dictionaryWithContentsOfURL:file error:nil];
        return TextOf(properties[@"ProductVersion"]);
    }
}

std::string GetOsLocale() {
    @autoreleasepool {
        NSString* preferred = NSLocale.preferredLanguages.firstObject;
        return TextOf(preferred ? preferred : NSLocale.currentLocale.localeIdentifier);
    }
}

namespace Platform {

const char* const kLibrarySuffix = ".dylib";

// Names carry the library that they are of.
int OwnScopeFlag() {
    return 0;
}

int OpenExitDescriptor(pid_t pid) {
    const int queue = kqueue();
    if (queue < 0) return -1;
    struct kevent exit;
    EV_SET(&exit, static_cast<uintptr_t>(pid), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    if (kevent(queue, &exit, 1, nullptr, 0, nullptr) == 0) return queue;
    close(queue);
    return -1;
}

const int kSpawnCloses = POSIX_SPAWN_CLOEXEC_DEFAULT;

void CloseOtherDescriptors(posix_spawn_file_actions_t*) {}

int OpenNameless(int, unsigned) {
    errno = ENOTSUP;
    return -1;
}

bool GiveName(int, int, const std::string&) {
    errno = ENOTSUP;
    return false;
}

// fsync leaves it in the drive's own memory.
bool MakeDurable(int fd) {
    return fcntl(fd, F_FULLFSYNC) == 0 || fsync(fd) == 0;
}

bool ReserveFileSpace(int fd, int64_t size) {
    struct stat status {};
    if (fstat(fd, &status) != 0) return false;
    if (size <= status.st_size) return true;
    fstore_t store{};
    store.fst_flags = F_ALLOCATEALL;
    store.fst_posmode = F_PEOFPOSMODE;
    store.fst_length = size - status.st_size;
    // A volume that cannot reserve says so, and is written without.
    if (fcntl(fd, F_PREALLOCATE, &store) != 0 && errno != ENOTSUP) return false;
    return ftruncate(fd, size) == 0;
}

}  // namespace Platform
}  // namespace KXP
