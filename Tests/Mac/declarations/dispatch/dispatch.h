#pragma once

// Queues are objects in Objective-C and structs in C++, so functions that take one are mangled differently.

#include "os/base.h"

#include <cstdint>

#ifdef __OBJC__
#include "objc/NSObject.h"
@protocol OS_dispatch_queue <NSObject>
@end
@protocol OS_dispatch_queue_main <OS_dispatch_queue>
@end
@protocol OS_dispatch_queue_global <OS_dispatch_queue>
@end
typedef NSObject<OS_dispatch_queue>* dispatch_queue_t;
typedef NSObject<OS_dispatch_queue_main>* dispatch_queue_main_t;
typedef NSObject<OS_dispatch_queue_global>* dispatch_queue_global_t;
#else
struct dispatch_queue_s {};
struct dispatch_queue_main_s : dispatch_queue_s {};
struct dispatch_queue_global_s : dispatch_queue_s {};
typedef dispatch_queue_s* dispatch_queue_t;
typedef dispatch_queue_main_s* dispatch_queue_main_t;
typedef dispatch_queue_global_s* dispatch_queue_global_t;
#endif

typedef uint64_t dispatch_time_t;

#define DISPATCH_TIME_NOW (0ull)
#define USEC_PER_SEC 1000000ull

enum : unsigned int {
    QOS_CLASS_UTILITY = 0x11,
};

OS_ASSUME_NONNULL_BEGIN
extern "C" {
typedef void (*dispatch_function_t)(void* _Nullable context);
dispatch_queue_main_t dispatch_get_main_queue();
dispatch_queue_global_t dispatch_get_global_queue(intptr_t identifier, uintptr_t flags);
void dispatch_async_f(dispatch_queue_t queue, void* _Nullable context, dispatch_function_t work);
void dispatch_after_f(dispatch_time_t when, dispatch_queue_t queue, void* _Nullable context,
                      dispatch_function_t work);
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t nanoseconds);
}
OS_ASSUME_NONNULL_END
