#pragma once

#include "CoreFoundation/CoreFoundation.h"
#include "CoreGraphics/Image.h"

typedef struct CF_BRIDGED_TYPE(id) CGImageDestination* CGImageDestinationRef;

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

CF_EXPORT const CFStringRef kCGImageDestinationLossyCompressionQuality;

CF_EXPORT CGImageDestinationRef _Nullable CGImageDestinationCreateWithData(
    CFMutableDataRef data, CFStringRef type, size_t count,
    CFDictionaryRef _Nullable options) CF_WARN_UNUSED_RESULT;
CF_EXPORT void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image,
                                          CFDictionaryRef _Nullable properties);
CF_EXPORT bool CGImageDestinationFinalize(CGImageDestinationRef destination) CF_WARN_UNUSED_RESULT;

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
