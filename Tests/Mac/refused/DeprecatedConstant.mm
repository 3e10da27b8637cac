#include <AppKit/AppKit.h>

NSPanel* panel() {
    return [[[NSPanel alloc] initWithContentRect:NSZeroRect
                                       styleMask:NSWindowStyleMaskTitled
                                         backing:NSBackingStoreRetained
                                           // expected-warning@-1 {{'NSBackingStoreRetained' is deprecated}}
                                           defer:NO] autorelease];
}
