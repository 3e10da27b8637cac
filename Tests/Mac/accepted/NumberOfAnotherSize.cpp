#include <CoreFoundation/CoreFoundation.h>

int64_t width(CFNumberRef number) {
    int64_t width = 0;
    CFNumberGetValue(number, kCFNumberSInt64Type, &width);
    return width;
}
