#include "Mac/Application.h"

#include "Mac/RaisedExceptions.h"

#import <AppKit/AppKit.h>

#include <utility>

namespace tavel {

void becomeAccessoryApplication() {
    ignoringRaised([] {
        NSApplication* const application = [NSApplication sharedApplication];
        [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
        // The method -run would do this, but passOneEvent takes its place. Since macOS 14 an application that
        // has not finished launching may not be told that it is active.
        static bool hasFinishedLaunching = false;
        if (!std::exchange(hasFinishedLaunching, true))
            [application finishLaunching];
    });
}

void requestActivation() {
    [[NSApplication sharedApplication] activateIgnoringOtherApps:NO];
}

/// Deliberate: not -activate, by which Apple replaces this call since macOS 14. The system may refuse that.
void demandActivation() {
    [[NSApplication sharedApplication] activateIgnoringOtherApps:YES];
}

void passOneEvent(std::chrono::milliseconds longestWait) {
    ignoringRaised([longestWait] {
        const std::chrono::duration<double> seconds = longestWait;
        NSApplication* const application = [NSApplication sharedApplication];
        NSEvent* const event =
            [application nextEventMatchingMask:NSEventMaskAny
                                     untilDate:[NSDate dateWithTimeIntervalSinceNow:seconds.count()]
                                        inMode:NSDefaultRunLoopMode
                                       dequeue:YES];
        if (event != nil)
            [application sendEvent:event];
    });
}

/// A posted event stays in the application's queue until a pass takes it.
void wakeApplication() {
    ignoringRaised([] {
        NSEvent* const event = [NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                                  location:NSMakePoint(0, 0)
                                             modifierFlags:0
                                                 timestamp:0
                                              windowNumber:0
                                                   context:nil
                                                   subtype:0
                                                     data1:0
                                                     data2:0];
        if (event != nil)
            [[NSApplication sharedApplication] postEvent:event atStart:YES];
    });
}

void runInAutoreleasePool(const std::function<void()>& function) {
    @autoreleasepool {
        function();
    }
}

} // namespace tavel
