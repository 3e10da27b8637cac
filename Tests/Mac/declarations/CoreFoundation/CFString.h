#pragma once

#include "CoreFoundation/CFBase.h"

#define CFSTR(text) (reinterpret_cast<CFStringRef>(__builtin___CFStringMakeConstantString("" text "")))

typedef uint32_t CFStringEncoding;

enum : CFStringEncoding {
    kCFStringEncodingUTF8 = 0x08000100,
};

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

CF_EXPORT CFTypeID CFStringGetTypeID();
CF_EXPORT CFStringRef _Nullable CFStringCreateWithBytes(CFAllocatorRef _Nullable allocator,
                                                        const UInt8* bytes, CFIndex size,
                                                        CFStringEncoding encoding,
                                                        Boolean external) CF_WARN_UNUSED_RESULT;
CF_EXPORT CFStringRef _Nullable CFStringCreateWithCString(CFAllocatorRef _Nullable allocator,
                                                          const char* text,
                                                          CFStringEncoding encoding) CF_WARN_UNUSED_RESULT;
CF_EXPORT CFIndex CFStringGetLength(CFStringRef string);
CF_EXPORT void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* _Null_unspecified buffer);

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
