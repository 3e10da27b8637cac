#include <AppKit/AppKit.h>

BOOL copyText(NSPasteboard* from, NSPasteboard* to) {
    NSString* const text = [from stringForType:NSPasteboardTypeString];
    if (text == nil)
        return NO;
    return [to setString:text forType:NSPasteboardTypeString];
}
