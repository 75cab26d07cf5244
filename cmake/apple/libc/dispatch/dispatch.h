// Queues of work. They are objects, counted by hand outside of Objective-C.
#pragma once

#ifdef __OBJC__
@protocol OS_dispatch_queue
@end
typedef id<OS_dispatch_queue> dispatch_queue_t;
typedef id<OS_dispatch_queue> dispatch_queue_attr_t;
#else
typedef struct dispatch_queue_s* dispatch_queue_t;
typedef struct dispatch_queue_attr_s* dispatch_queue_attr_t;
extern "C" void dispatch_release(dispatch_queue_t queue);
#endif
#define DISPATCH_QUEUE_SERIAL nullptr

typedef void (*dispatch_function_t)(void* context);

extern "C" {
dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attributes);
void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
}
