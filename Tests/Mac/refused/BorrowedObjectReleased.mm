#include <AppKit/AppKit.h>

void release() {
    NSDate* const now = [NSDate date];
    [now release]; // expected-warning {{object that is not owned at this point}}
}
