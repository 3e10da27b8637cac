#include <CoreFoundation/CoreFoundation.h>

CFStringRef greeting() {
    return CFStringCreateWithCString(nullptr, "Bonjour", kCFStringEncodingUTF8);
    // expected-warning@-1 {{Potential leak of an object of type}}
}
