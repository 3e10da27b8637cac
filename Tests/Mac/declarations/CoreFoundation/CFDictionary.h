#pragma once

#include "CoreFoundation/CFBase.h"

struct CFDictionaryKeyCallBacks;
struct CFDictionaryValueCallBacks;

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

CF_EXPORT const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
CF_EXPORT const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

CF_EXPORT CFDictionaryRef _Nullable CFDictionaryCreate(
    CFAllocatorRef _Nullable allocator, const void* _Nullable* _Nullable keys,
    const void* _Nullable* _Nullable values, CFIndex count,
    const CFDictionaryKeyCallBacks* _Nullable keyCallBacks,
    const CFDictionaryValueCallBacks* _Nullable valueCallBacks) CF_WARN_UNUSED_RESULT;
CF_EXPORT const void* _Nullable CFDictionaryGetValue(CFDictionaryRef dictionary, const void* _Nullable key);

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
