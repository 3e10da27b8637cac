#pragma once

#include "CoreFoundation/CoreFoundation.h"
#include "CoreGraphics/Image.h"

typedef struct CF_BRIDGED_TYPE(id) CGImageSource* CGImageSourceRef;

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

CF_EXPORT const CFStringRef kCGImagePropertyPixelWidth;
CF_EXPORT const CFStringRef kCGImagePropertyPixelHeight;
CF_EXPORT const CFStringRef kCGImagePropertyHasAlpha;

CF_EXPORT CGImageSourceRef _Nullable CGImageSourceCreateWithData(
    CFDataRef data, CFDictionaryRef _Nullable options) CF_WARN_UNUSED_RESULT;
CF_EXPORT CFStringRef _Nullable CGImageSourceGetType(CGImageSourceRef source);
CF_EXPORT CFDictionaryRef _Nullable CGImageSourceCopyPropertiesAtIndex(
    CGImageSourceRef source, size_t index, CFDictionaryRef _Nullable options) CF_WARN_UNUSED_RESULT;
CF_EXPORT CGImageRef _Nullable CGImageSourceCreateImageAtIndex(
    CGImageSourceRef source, size_t index, CFDictionaryRef _Nullable options) CF_WARN_UNUSED_RESULT;
CF_EXPORT OSStatus CGImageSourceSetAllowableTypes(CFArrayRef allowableTypes) API_AVAILABLE(macos(14.2));

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
