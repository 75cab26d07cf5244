#include <climits>
#include <cstdlib>
#include <stdexcept>

#import <Foundation/Foundation.h>
#include <mach-o/dyld.h>

#include "common/product/Profile.h"

namespace KXP {
namespace {

constexpr uint32_t kExePathSize = 1024;

}  // namespace

std::string GetExePath() {
    char path[kExePathSize];
    uint32_t size = sizeof path;
    if (_NSGetExecutablePath(path, &size) != 0)
        throw std::runtime_error("KXP::GetExeName _NSGetExecutablePath failed");
    char resolved[PATH_MAX];
    return realpath(path, resolved) ? resolved : path;
}

namespace Platform {

std::string MoviesFolder() {
    @autoreleasepool {
        NSString* folder =
            NSSearchPathForDirectoriesInDomains(NSMoviesDirectory, NSUserDomainMask, YES).firstObject;
        return folder ? folder.UTF8String : "";
    }
}

}  // namespace Platform
}  // namespace KXP
