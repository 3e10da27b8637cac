#include <AppKit/AppKit.h>

BOOL empty(NSPasteboard* pasteboard) {
    return [pasteboard setString:@"" forType:NSPasteboardTypeString];
}
