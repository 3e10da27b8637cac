#pragma once

#include "CoreFoundation/CFBase.h"

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

CF_EXPORT CFDataRef _Nullable CFDataCreateWithBytesNoCopy(
    CFAllocatorRef _Nullable allocator, const UInt8* _Nullable bytes, CFIndex size,
    CFAllocatorRef _Null_unspecified bytesDeallocator) CF_WARN_UNUSED_RESULT;
CF_EXPORT CFMutableDataRef _Nullable CFDataCreateMutable(CFAllocatorRef _Nullable allocator,
                                                         CFIndex capacity) CF_WARN_UNUSED_RESULT;
CF_EXPORT CFIndex CFDataGetLength(CFDataRef data);
CF_EXPORT const UInt8* _Nullable CFDataGetBytePtr(CFDataRef data);

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
