#include <CoreGraphics/CoreGraphics.h>

int64_t keyCode(CGEventRef event) {
    return CGEventGetIntegerValueField(event, kCGEventKeyDown);
    // expected-error@-1 {{no matching function for call to 'CGEventGetIntegerValueField'}}
}
