#pragma once

#include "CoreFoundation/CoreFoundation.h"

#include <sys/types.h>

typedef const struct CF_BRIDGED_TYPE(id) __AXUIElement* AXUIElementRef;

enum AXError : int32_t {
    kAXErrorSuccess = 0,
};

#define kAXFocusedUIElementAttribute CFSTR("AXFocusedUIElement")
#define kAXRoleAttribute CFSTR("AXRole")

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

CF_EXPORT Boolean AXIsProcessTrusted();
CF_EXPORT CFTypeID AXUIElementGetTypeID();
CF_EXPORT AXUIElementRef AXUIElementCreateApplication(pid_t process)
    CF_RETURNS_RETAINED CF_WARN_UNUSED_RESULT;
CF_EXPORT AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float seconds);
CF_EXPORT AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                                CFTypeRef _Nullable* CF_RETURNS_RETAINED value)
    CF_WARN_UNUSED_RESULT;

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
