#include <CoreFoundation/CoreFoundation.h>

void stop() {
    CFRunLoopHalt(CFRunLoopGetMain()); // expected-error {{use of undeclared identifier 'CFRunLoopHalt'}}
}
