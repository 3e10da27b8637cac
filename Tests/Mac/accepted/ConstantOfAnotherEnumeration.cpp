#include <CoreGraphics/CoreGraphics.h>

int64_t keyCode(CGEventRef event) {
    return CGEventGetIntegerValueField(event, kCGKeyboardEventKeycode);
}
