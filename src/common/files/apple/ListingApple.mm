#import <Foundation/Foundation.h>

#include "common/system/System.h"

namespace KXP::Platform {

std::vector<std::string> ListFolder(const std::string& folder, bool folders) {
    std::vector<std::string> names;
    @autoreleasepool {
        NSFileManager* files = NSFileManager.defaultManager;
        NSString* path = [NSString stringWithUTF8String:folder.c_str()];
        if (!path) return names;
        for (NSString* name in [files contentsOfDirectoryAtPath:path error:nullptr]) {
            BOOL isFolder = NO;
            NSString* whole = [NSString stringWithFormat:@"%@/%@", path, name];
            if (![files fileExistsAtPath:whole isDirectory:&isFolder]) continue;
            const char* text = name.UTF8String;  // null for what is not Unicode
            if (text && static_cast<bool>(isFolder) == folders) names.emplace_back(text);
        }
    }
    return names;
}

}  // namespace KXP::Platform
