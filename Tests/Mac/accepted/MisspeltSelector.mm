#include <AppKit/AppKit.h>

void clear(NSPasteboard* pasteboard) {
    [pasteboard clearContents];
}
