#include <CoreFoundation/CoreFoundation.h>

CFIndex capacity() {
    CFMutableDataRef data = CFDataCreateMutable(nullptr, 0);
    return data == nullptr ? 0 : CFDataGetLength(data);
    // expected-warning@-1 {{Potential leak of an object stored into 'data'}}
}
