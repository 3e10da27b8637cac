#include <AppKit/AppKit.h>

void release() {
    NSDate* const now = [[NSDate alloc] init];
    [now release];
}
