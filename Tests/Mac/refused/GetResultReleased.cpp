#include <CoreFoundation/CoreFoundation.h>

void stop() {
    CFRunLoopRef loop = CFRunLoopGetMain();
    CFRunLoopStop(loop);
    CFRelease(loop); // expected-warning {{object that is not owned at this point}}
}
