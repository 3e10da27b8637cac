#pragma once

#include "os/availability.h"
#include "os/base.h"

#include <cstdint>

#ifdef __OBJC__
#define CF_BRIDGED_TYPE(type) __attribute__((objc_bridge(type)))
#define CF_BRIDGED_MUTABLE_TYPE(type) __attribute__((objc_bridge_mutable(type)))
#else
#define CF_BRIDGED_TYPE(type)
#define CF_BRIDGED_MUTABLE_TYPE(type)
#endif
#define CF_ASSUME_NONNULL_BEGIN OS_ASSUME_NONNULL_BEGIN
#define CF_ASSUME_NONNULL_END OS_ASSUME_NONNULL_END
#define CF_IMPLICIT_BRIDGING_ENABLED _Pragma("clang arc_cf_code_audited begin")
#define CF_IMPLICIT_BRIDGING_DISABLED _Pragma("clang arc_cf_code_audited end")
#define CF_RETURNS_RETAINED __attribute__((cf_returns_retained))
#define CF_RETURNS_NOT_RETAINED __attribute__((cf_returns_not_retained))
#define CF_CONSUMED __attribute__((cf_consumed))
#define CF_WARN_UNUSED_RESULT __attribute__((warn_unused_result))
#define CF_EXPORT extern "C"

typedef unsigned char Boolean;
typedef unsigned char UInt8;
typedef unsigned short UniChar;
typedef std::int32_t OSStatus;

typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef long CFIndex;

struct CFRange {
    CFIndex location;
    CFIndex length;
};

typedef const CF_BRIDGED_TYPE(id) void* CFTypeRef;
typedef const struct CF_BRIDGED_TYPE(id) __CFAllocator* CFAllocatorRef;
typedef const struct CF_BRIDGED_TYPE(NSString) __CFString* CFStringRef;
typedef const struct CF_BRIDGED_TYPE(NSDictionary) __CFDictionary* CFDictionaryRef;
typedef const struct CF_BRIDGED_TYPE(NSArray) __CFArray* CFArrayRef;
typedef const struct CF_BRIDGED_TYPE(NSData) __CFData* CFDataRef;
typedef struct CF_BRIDGED_MUTABLE_TYPE(NSMutableData) __CFData* CFMutableDataRef;
typedef const struct CF_BRIDGED_TYPE(NSNumber) __CFNumber* CFNumberRef;
typedef const struct CF_BRIDGED_TYPE(NSNumber) __CFBoolean* CFBooleanRef;

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
    return {location, length};
}

CF_EXPORT const CFAllocatorRef _Null_unspecified kCFAllocatorDefault;
CF_EXPORT const CFAllocatorRef kCFAllocatorNull;

CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef object);
CF_EXPORT void CFRelease(CFTypeRef object);
CF_EXPORT Boolean CFEqual(CFTypeRef one, CFTypeRef other);

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
