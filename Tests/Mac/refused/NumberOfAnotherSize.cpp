#include <CoreFoundation/CoreFoundation.h>

int width(CFNumberRef number) {
    int width = 0;
    CFNumberGetValue(number, kCFNumberSInt64Type, &width);
    // expected-warning@-1 {{64-bit integer is used to initialize a 32-bit integer}}
    return width;
}
