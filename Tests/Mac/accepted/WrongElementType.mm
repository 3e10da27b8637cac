#include <AppKit/AppKit.h>

BOOL write(NSPasteboard* pasteboard, NSArray<NSPasteboardItem*>* contents) {
    return [pasteboard writeObjects:contents];
}
