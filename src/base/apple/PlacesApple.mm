#import <Foundation/Foundation.h>

#include "base/Places.h"

namespace KXP::Platform {
namespace {

std::string UserFolder(NSSearchPathDirectory directory) {
    @autoreleasepool {
        NSString* folder = NSSearchPathForDirectoriesInDomains(directory, NSUserDomainMask, YES).firstObject;
        return folder ? folder.UTF8String : "";
    }
}

}  // namespace

std::string AppSupportFolder() {
    return UserFolder(NSApplicationSupportDirectory);
}

std::string CacheFolder() {
    return UserFolder(NSCachesDirectory);
}

std::string HomeFolder() {
    @autoreleasepool {
        return NSHomeDirectory().UTF8String;
    }
}

std::string LibraryFolder() {
    return UserFolder(NSLibraryDirectory);
}

}  // namespace KXP::Platform
