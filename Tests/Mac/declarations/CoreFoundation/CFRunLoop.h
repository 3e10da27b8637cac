#pragma once

#include "CoreFoundation/CFBase.h"

typedef CFStringRef CFRunLoopMode;
typedef struct CF_BRIDGED_MUTABLE_TYPE(id) __CFRunLoop* CFRunLoopRef;
typedef struct CF_BRIDGED_MUTABLE_TYPE(id) __CFRunLoopSource* CFRunLoopSourceRef;
typedef struct CF_BRIDGED_MUTABLE_TYPE(NSTimer) __CFRunLoopTimer* CFRunLoopTimerRef;
typedef double CFTimeInterval;
typedef CFTimeInterval CFAbsoluteTime;

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

CF_EXPORT const CFRunLoopMode kCFRunLoopDefaultMode;
CF_EXPORT const CFRunLoopMode kCFRunLoopCommonModes;

typedef void (*CFRunLoopTimerCallBack)(CFRunLoopTimerRef _Null_unspecified timer,
                                       void* _Null_unspecified info);

struct CFRunLoopTimerContext {
    CFIndex version;
    void* _Null_unspecified info;
    const void* _Null_unspecified (*_Null_unspecified retain)(const void* _Null_unspecified info);
    void (*_Null_unspecified release)(const void* _Null_unspecified info);
    CFStringRef _Null_unspecified (*_Null_unspecified copyDescription)(const void* _Null_unspecified info);
};

CF_EXPORT CFAbsoluteTime CFAbsoluteTimeGetCurrent();
CF_EXPORT CFRunLoopRef CFRunLoopGetMain();
CF_EXPORT void CFRunLoopStop(CFRunLoopRef loop);
CF_EXPORT void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode);
CF_EXPORT void CFRunLoopAddTimer(CFRunLoopRef loop, CFRunLoopTimerRef timer, CFRunLoopMode mode);
CF_EXPORT CFRunLoopTimerRef _Null_unspecified CFRunLoopTimerCreate(
    CFAllocatorRef _Nullable allocator, CFAbsoluteTime first, CFTimeInterval interval, CFOptionFlags flags,
    CFIndex order, CFRunLoopTimerCallBack callBack,
    CFRunLoopTimerContext* _Nullable context) CF_WARN_UNUSED_RESULT;
CF_EXPORT void CFRunLoopTimerSetTolerance(CFRunLoopTimerRef timer, CFTimeInterval tolerance);
CF_EXPORT void CFRunLoopTimerInvalidate(CFRunLoopTimerRef timer);

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
