#include <CoreFoundation/CoreFoundation.h>

void stop() {
    CFRunLoopStop(CFRunLoopGetMain());
}
