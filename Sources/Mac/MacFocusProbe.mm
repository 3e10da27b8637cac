#include "Mac/MacFocusProbe.h"

#include "Mac/AccessibleFocus.h"
#include "Mac/RaisedExceptions.h"
#include "Mac/Strings.h"

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>

namespace tavel {

void MacFocusProbe::follow(bool) {}

std::optional<RunningApplication> MacFocusProbe::frontmostApplication() {
    return unlessRaised(std::optional<RunningApplication>(), []() -> std::optional<RunningApplication> {
        NSRunningApplication* const application = [[NSWorkspace sharedWorkspace] frontmostApplication];
        if (application == nil)
            return std::nullopt;
        return RunningApplication{[application processIdentifier],
                                  utf8FromString([application bundleIdentifier]).value_or("")};
    });
}

bool MacFocusProbe::isTrusted() {
    return AXIsProcessTrusted() != 0;
}

std::optional<std::string> MacFocusProbe::focusedRole(std::int32_t processIdentifier) {
    return accessibleFocusRole(processIdentifier);
}

void MacFocusProbe::activate(std::int32_t processIdentifier) {
    ignoringRaised([processIdentifier] {
        NSRunningApplication* const application =
            [NSRunningApplication runningApplicationWithProcessIdentifier:processIdentifier];
        if (application == nil)
            return;
        // Since macOS 14 activation is cooperative: the application in front has to yield first.
        if (@available(macOS 14.0, *))
            [[NSApplication sharedApplication] yieldActivationToApplication:application];
        [application activateWithOptions:0];
    });
}

} // namespace tavel
