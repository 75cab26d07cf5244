#import <Foundation/Foundation.h>

#include "gallery-host/trash/Trash.h"

namespace host {
namespace {

std::string ReasonOf(NSError* error) {
    if ([error.domain isEqualToString:NSCocoaErrorDomain] && error.code == NSFeatureUnsupportedError)
        return "its volume has no trash";
    return std::string("cannot be moved to the trash: ") + error.localizedDescription.UTF8String;
}

}  // namespace

std::string MoveToTrash(const std::string& path) {
    @autoreleasepool {
        NSString* text = [NSString stringWithUTF8String:path.c_str()];
        if (!text) return "cannot be moved to the trash: its name is not UTF-8";
        NSError* error = nil;
        const BOOL moved = [NSFileManager.defaultManager trashItemAtURL:[NSURL fileURLWithPath:text]
                                                       resultingItemURL:nil
                                                                  error:&error];
        return moved ? std::string() : ReasonOf(error);
    }
}

// The system keeps to itself where the files in its trash were.
std::vector<TrashedFile> ListTrashed(const std::string&) {
    return {};
}

std::string Restore(const TrashedFile&) {
    return "the Finder can restore it";
}

}  // namespace host
