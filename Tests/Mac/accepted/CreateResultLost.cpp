#include <CoreFoundation/CoreFoundation.h>

CFIndex capacity() {
    CFMutableDataRef data = CFDataCreateMutable(nullptr, 0);
    if (data == nullptr)
        return 0;
    const CFIndex length = CFDataGetLength(data);
    CFRelease(data);
    return length;
}
