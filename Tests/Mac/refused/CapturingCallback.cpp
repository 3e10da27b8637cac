#include <CoreGraphics/CoreGraphics.h>

CFMachPortRef createTap(bool passes) {
    return CGEventTapCreate( // expected-error {{no matching function for call to 'CGEventTapCreate'}}
        kCGSessionEventTap, kCGHeadInsertEventTap, kCGEventTapOptionDefault, CGEventMaskBit(kCGEventKeyDown),
        [passes](CGEventTapProxy, CGEventType, CGEventRef event, void*) { return passes ? event : nullptr; },
        nullptr);
}
