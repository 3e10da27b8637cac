#include <AppKit/AppKit.h>

BOOL copyText(NSPasteboard* from, NSPasteboard* to) {
    NSString* const text = [from stringForType:NSPasteboardTypeString];
    return text != nil && [to setString:text forType:NSPasteboardTypeString];
}
