#include <AppKit/AppKit.h>

BOOL write(NSPasteboard* pasteboard, NSData* text) {
    return [pasteboard setString:text forType:NSPasteboardTypeString];
    // expected-error@-1 {{with an lvalue of type 'NSData *'}}
}
