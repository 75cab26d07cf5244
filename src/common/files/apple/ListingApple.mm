#import <Foundation/Foundation.h>

#include "common/system/System.h"

namespace KXP::Platform {

std::vector<std::string> ListFolder(const std::string& folder, bool folders) {
    std::vector<std::string> names;
    @autoreleasepool {
        NSFileManager* files = NSFileManager.defaultManager;
        NSString* path = [NSString stringWithCString:folder.c_str() encoding:NSString.defaultCStringEncoding];
        if (!path) return names;
        for (NSString* name in [files contentsOfDirectoryAtPath:path error:nil]) {
            BOOL isFolder = NO;
            NSString* whole = [NSString stringWithFormat:@"%@/%@", path, name];
            if (![files fileExistsAtPath:whole isDirectory:&isFolder]) continue;
            if (static_cast<bool>(isFolder) == folders) names.emplace_back(name.UTF8String);
        }
    }
    return names;
}

}  // namespace KXP::Platform
