#include <CoreFoundation/CoreFoundation.h>

CFStringRef createGreeting() {
    return CFStringCreateWithCString(nullptr, "Bonjour", kCFStringEncodingUTF8);
}
