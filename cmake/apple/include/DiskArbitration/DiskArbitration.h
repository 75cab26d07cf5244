// The part of DiskArbitration that we use, after its public documentation.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

typedef struct CF_BRIDGED(id) __DASession* DASessionRef;
typedef struct CF_BRIDGED(id) __DADisk* DADiskRef;

extern "C" {
extern const CFStringRef kDADiskDescriptionDeviceInternalKey;

DASessionRef DASessionCreate(CFAllocatorRef allocator);
DADiskRef DADiskCreateFromBSDName(CFAllocatorRef allocator, DASessionRef session, const char* name);
CFDictionaryRef DADiskCopyDescription(DADiskRef disk);
}
