#include <CoreGraphics/CoreGraphics.h>

CFMachPortRef createTap(bool& passes) {
    return CGEventTapCreate(
        kCGSessionEventTap, kCGHeadInsertEventTap, kCGEventTapOptionDefault, CGEventMaskBit(kCGEventKeyDown),
        [](CGEventTapProxy, CGEventType, CGEventRef event, void* userInfo) {
            return *static_cast<bool*>(userInfo) ? event : nullptr;
        },
        &passes);
}
