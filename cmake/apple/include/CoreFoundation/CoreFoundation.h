// The part of CoreFoundation that we use, after its public documentation. Declarations alone: checks on Linux
// compile against them, and a Mac has the real ones.
#pragma once

#include <stdint.h>

#if defined(__OBJC__)
#define CF_BRIDGED(type) __attribute__((objc_bridge(type)))
#else
#define CF_BRIDGED(type)
#endif

typedef const void* CFTypeRef;
typedef long CFIndex;
typedef double CFTimeInterval;
typedef unsigned char Boolean;
typedef uint32_t CFStringEncoding;
typedef const struct CF_BRIDGED(NSString) __CFString* CFStringRef;
typedef const struct CF_BRIDGED(NSArray) __CFArray* CFArrayRef;
typedef const struct CF_BRIDGED(NSDictionary) __CFDictionary* CFDictionaryRef;
typedef const struct CF_BRIDGED(NSNumber) __CFBoolean* CFBooleanRef;
typedef const struct CF_BRIDGED(NSNumber) __CFNumber* CFNumberRef;
typedef const struct CF_BRIDGED(NSData) __CFData* CFDataRef;
typedef struct CF_BRIDGED(NSMutableData) __CFData* CFMutableDataRef;
typedef const struct CF_BRIDGED(id) __CFAllocator* CFAllocatorRef;

typedef struct {
    CFIndex version;
    const void* (*retain)(CFAllocatorRef allocator, const void* value);
    void (*release)(CFAllocatorRef allocator, const void* value);
    CFStringRef (*copyDescription)(const void* value);
    Boolean (*equal)(const void* one, const void* other);
} CFArrayCallBacks;

struct CFDictionaryKeyCallBacks;
struct CFDictionaryValueCallBacks;

enum CFNumberType : CFIndex { kCFNumberIntType = 9 };
enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

extern "C" {
extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFArrayCallBacks kCFTypeArrayCallBacks;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;
extern const CFBooleanRef kCFBooleanTrue;

void CFRelease(CFTypeRef object);
Boolean CFEqual(CFTypeRef one, CFTypeRef other);
CFMutableDataRef CFDataCreateMutable(CFAllocatorRef allocator, CFIndex capacity);
const uint8_t* CFDataGetBytePtr(CFDataRef data);
CFIndex CFDataGetLength(CFDataRef data);
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
                                   CFIndex count, const CFDictionaryKeyCallBacks* keyCallbacks,
                                   const CFDictionaryValueCallBacks* valueCallbacks);
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);
Boolean CFBooleanGetValue(CFBooleanRef boolean);
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);
CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex count,
                         const CFArrayCallBacks* callbacks);
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text, CFStringEncoding encoding);
}

#define CFSTR(text) ((CFStringRef)__builtin___CFStringMakeConstantString(text))
