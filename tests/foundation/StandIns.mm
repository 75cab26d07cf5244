// What the sources for macOS call that GNUstep and this system do not have.
#import <Foundation/Foundation.h>

#include <cstdint>

@implementation NSDictionary (StandIns)
+ (NSDictionary*)dictionaryWithContentsOfURL:(NSURL*)url error:(NSError**)error {
    if (error) *error = nil;
    return [self dictionaryWithContentsOfURL:url];
}
@end

extern "C" int _NSGetExecutablePath(char*, uint32_t*) {
    return -1;
}
