#include "Mac/AccessibleFocus.h"

#include "Mac/CFRef.h"
#include "Mac/CoreStrings.h"

#include <ApplicationServices/ApplicationServices.h>

namespace tavel {

namespace {

/// The user's keyboard waits for the answer.
constexpr float answerTimeout = 0.04F; // seconds

/// Null on an error or time-out.
CFRef<CFTypeRef> attributeOf(AXUIElementRef element, CFStringRef name) {
    AXUIElementSetMessagingTimeout(element, answerTimeout);
    CFTypeRef value = nullptr;
    if (AXUIElementCopyAttributeValue(element, name, &value) != kAXErrorSuccess)
        return {};
    return CFRef<CFTypeRef>::adopt(value);
}

} // namespace

std::optional<std::string> accessibleFocusRole(std::int32_t processIdentifier) {
    const auto application = CFRef<AXUIElementRef>::adopt(AXUIElementCreateApplication(processIdentifier));
    const auto focused = attributeOf(application.get(), kAXFocusedUIElementAttribute);
    if (!focused || CFGetTypeID(focused.get()) != AXUIElementGetTypeID())
        return std::nullopt;
    const auto role = attributeOf(static_cast<AXUIElementRef>(focused.get()), kAXRoleAttribute);
    return utf8FromObject(role.get());
}

} // namespace tavel
