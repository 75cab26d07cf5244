#import <Foundation/Foundation.h>
#include <crt_externs.h>
#include <sys/event.h>
#include <unistd.h>

#include "common/system/System.h"

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

// A library may not name the variable itself.
char** Environment() {
    return *_NSGetEnviron();
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

}  // namespace Platform
}  // namespace KXP
