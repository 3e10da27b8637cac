#include "Mac/ApplicationActivation.h"

#import <AppKit/AppKit.h>

namespace tavel {

void requestActivation() {
    NSApplication* const application = [NSApplication sharedApplication];
    if (@available(macOS 14.0, *))
        [application activate];
    else
        [application activateIgnoringOtherApps:NO];
}

} // namespace tavel
