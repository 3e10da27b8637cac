#include <AppKit/AppKit.h>

BOOL write(NSPasteboard* pasteboard, NSArray<NSData*>* contents) {
    return [pasteboard writeObjects:contents];
    // expected-error@-1 {{cannot initialize a parameter of type 'NSArray<id<NSPasteboardWriting>>}}
}
