#include <CoreGraphics/CoreGraphics.h>

void post(CGEventRef event) {
    CGEventPost(0, event); // expected-error {{no matching function for call to 'CGEventPost'}}
}
