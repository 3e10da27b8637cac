#include <CoreGraphics/CoreGraphics.h>

void press() {
    CGEventCreateKeyboardEvent(nullptr, 9, true); // expected-warning {{ignoring return value}}
} // expected-warning {{Potential leak of an object of type}}
