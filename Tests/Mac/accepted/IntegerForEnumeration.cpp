#include <CoreGraphics/CoreGraphics.h>

void post(CGEventRef event) {
    CGEventPost(kCGHIDEventTap, event);
}
