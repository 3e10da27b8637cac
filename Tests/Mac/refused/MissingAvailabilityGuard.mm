#include <AppKit/AppKit.h>

void activate() {
    [NSApp activate]; // expected-warning {{only available on macOS 14.0 or newer}}
}

bool isAskedAbout(NSPasteboard* pasteboard) {
    // expected-warning@+1 2 {{only available on macOS 15.4 or newer}}
    return [pasteboard accessBehavior] == NSPasteboardAccessBehaviorAsk;
}
