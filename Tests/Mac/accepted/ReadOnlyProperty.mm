#include <AppKit/AppKit.h>

NSInteger count(NSPasteboard* pasteboard) {
    return pasteboard.changeCount;
}
