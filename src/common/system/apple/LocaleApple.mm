#import <Foundation/Foundation.h>

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
        NSDictionary* properties = [NSDictionary dictionaryWithContentsOfURL:file error:nullptr];
        return TextOf([properties objectForKey:@"ProductVersion"]);
    }
}

std::string GetOsLocale() {
    @autoreleasepool {
        NSString* preferred = NSLocale.preferredLanguages.firstObject;
        return TextOf(preferred ? preferred : NSLocale.currentLocale.localeIdentifier);
    }
}

}  // namespace KXP
