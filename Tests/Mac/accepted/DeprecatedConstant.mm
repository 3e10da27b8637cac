#include <AppKit/AppKit.h>

NSPanel* panel() {
    return [[[NSPanel alloc] initWithContentRect:NSZeroRect
                                       styleMask:NSWindowStyleMaskTitled
                                         backing:NSBackingStoreBuffered
                                           defer:NO] autorelease];
}
