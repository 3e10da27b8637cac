#pragma once

#include "CoreFoundation/CFBase.h"

struct CFArrayCallBacks;

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

CF_EXPORT const CFArrayCallBacks kCFTypeArrayCallBacks;

CF_EXPORT
CFArrayRef _Nullable CFArrayCreate(CFAllocatorRef _Nullable allocator,
                                   const void* _Nullable* _Nullable values, CFIndex count,
                                   const CFArrayCallBacks* _Nullable callBacks) CF_WARN_UNUSED_RESULT;

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
