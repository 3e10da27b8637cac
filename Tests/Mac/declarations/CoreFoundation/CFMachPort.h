#pragma once

#include "CoreFoundation/CFRunLoop.h"

typedef struct CF_BRIDGED_MUTABLE_TYPE(NSMachPort) __CFMachPort* CFMachPortRef;

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

CF_EXPORT void CFMachPortInvalidate(CFMachPortRef port);
CF_EXPORT CFRunLoopSourceRef _Nullable CFMachPortCreateRunLoopSource(CFAllocatorRef _Nullable allocator,
                                                                     CFMachPortRef port,
                                                                     CFIndex order) CF_WARN_UNUSED_RESULT;

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
