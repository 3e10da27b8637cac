#include <AppKit/AppKit.h>

void activate() {
    if (@available(macOS 14.0, *))
        [NSApp activate];
    else
        [NSApp activateIgnoringOtherApps:NO];
}

bool isAskedAbout(NSPasteboard* pasteboard) {
    if (@available(macOS 15.4, *))
        return [pasteboard accessBehavior] == NSPasteboardAccessBehaviorAsk;
    return false;
}
