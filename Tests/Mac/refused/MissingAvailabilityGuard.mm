#include <AppKit/AppKit.h>

void activate() {
    [NSApp activate]; // expected-warning {{only available on macOS 14.0 or newer}}
}
