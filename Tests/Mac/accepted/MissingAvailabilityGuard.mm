#include <AppKit/AppKit.h>

void activate() {
    if (@available(macOS 14.0, *))
        [NSApp activate];
    else
        [NSApp activateIgnoringOtherApps:NO];
}
