#include <CoreGraphics/CoreGraphics.h>

void press() {
    CGEventRef event = CGEventCreateKeyboardEvent(nullptr, 9, true);
    if (event != nullptr)
        CFRelease(event);
}
