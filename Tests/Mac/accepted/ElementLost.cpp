#include <ApplicationServices/ApplicationServices.h>

bool limit(pid_t process) {
    AXUIElementRef application = AXUIElementCreateApplication(process);
    const AXError error = AXUIElementSetMessagingTimeout(application, 0.04F);
    CFRelease(application);
    return error == kAXErrorSuccess;
}
