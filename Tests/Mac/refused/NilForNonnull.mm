#include <AppKit/AppKit.h>

BOOL empty(NSPasteboard* pasteboard) {
    return [pasteboard setString:nil forType:NSPasteboardTypeString];
    // expected-warning@-1 {{null passed to a callee that requires a non-null argument}}
}
