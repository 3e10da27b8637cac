#include <AppKit/AppKit.h>

BOOL write(NSPasteboard* pasteboard, NSString* text) {
    return [pasteboard setString:text forType:NSPasteboardTypeString];
}
