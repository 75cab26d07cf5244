// The events of file systems in CoreServices as far as we use them, after their public documentation.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>
#include <stddef.h>

typedef uint32_t FSEventStreamCreateFlags;
typedef uint32_t FSEventStreamEventFlags;
typedef uint64_t FSEventStreamEventId;
typedef struct __FSEventStream* FSEventStreamRef;
typedef const struct __FSEventStream* ConstFSEventStreamRef;

typedef struct {
    CFIndex version;
    void* info;
    const void* (*retain)(const void* info);
    void (*release)(const void* info);
    CFStringRef (*copyDescription)(const void* info);
} FSEventStreamContext;

typedef void (*FSEventStreamCallback)(ConstFSEventStreamRef stream, void* info, size_t count, void* paths,
                                      const FSEventStreamEventFlags* flags, const FSEventStreamEventId* ids);

enum : FSEventStreamEventId { kFSEventStreamEventIdSinceNow = 0xFFFFFFFFFFFFFFFFULL };
enum : FSEventStreamCreateFlags {
    kFSEventStreamCreateFlagFileEvents = 0x00000010,
};

extern "C" {
FSEventStreamRef FSEventStreamCreate(CFAllocatorRef allocator, FSEventStreamCallback callback,
                                     FSEventStreamContext* context, CFArrayRef paths,
                                     FSEventStreamEventId since, CFTimeInterval latency,
                                     FSEventStreamCreateFlags flags);
void FSEventStreamSetDispatchQueue(FSEventStreamRef stream, dispatch_queue_t queue);
Boolean FSEventStreamStart(FSEventStreamRef stream);
void FSEventStreamFlushSync(FSEventStreamRef stream);
void FSEventStreamStop(FSEventStreamRef stream);
void FSEventStreamInvalidate(FSEventStreamRef stream);
void FSEventStreamRelease(FSEventStreamRef stream);
}
