#pragma once

#include "CoreFoundation/CFBase.h"

enum CFNumberType : CFIndex {
    kCFNumberSInt64Type = 4,
    kCFNumberDoubleType = 13,
};

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

CF_EXPORT CFTypeID CFBooleanGetTypeID();
CF_EXPORT Boolean CFBooleanGetValue(CFBooleanRef boolean);
CF_EXPORT CFTypeID CFNumberGetTypeID();
CF_EXPORT CFNumberRef _Nullable CFNumberCreate(CFAllocatorRef _Nullable allocator, CFNumberType type,
                                               const void* value) CF_WARN_UNUSED_RESULT;
CF_EXPORT Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
