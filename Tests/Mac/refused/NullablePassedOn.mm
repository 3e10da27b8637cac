#include <AppKit/AppKit.h>

BOOL copyText(NSPasteboard* from, NSPasteboard* to) {
    return [to setString:[from stringForType:NSPasteboardTypeString] forType:NSPasteboardTypeString];
    // expected-warning@-1 {{implicit conversion from nullable pointer}}
    // expected-warning@-2 {{Nullable pointer is passed to a callee that requires a non-null}}
}
