#include "Mac/BackgroundActivity.h"

#include "Mac/RaisedExceptions.h"

#import <Foundation/Foundation.h>

namespace tavel {

void keepPaceInBackground() {
    ignoringRaised([] {
        // The activity ends with the object, so this one belongs to the process.
        static id<NSObject> activity = nil;
        if (activity == nil)
            activity = [[[NSProcessInfo processInfo]
                beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                                  reason:@"Watching the clipboard"] retain];
    });
}

} // namespace tavel
