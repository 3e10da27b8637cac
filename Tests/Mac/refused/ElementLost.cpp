#include <ApplicationServices/ApplicationServices.h>

bool limit(pid_t process) {
    AXUIElementRef application = AXUIElementCreateApplication(process);
    return AXUIElementSetMessagingTimeout(application, 0.04F) == kAXErrorSuccess;
    // expected-warning@-1 {{Potential leak of an object stored into 'application'}}
}
