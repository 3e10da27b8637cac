#include <AppKit/AppKit.h>

BOOL copyText(NSPasteboard* from, NSPasteboard* to) {
    NSString* const text = [from stringForType:NSPasteboardTypeString];
    return [to setString:text forType:NSPasteboardTypeString];
    // expected-warning@-1 {{Nullable pointer is passed to a callee that requires a non-null}}
}
