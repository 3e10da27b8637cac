#include "Mac/Application.h"

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <thread>

#if __has_feature(address_sanitizer)
#include <sanitizer/allocator_interface.h>
#endif

using tavel::passOneEvent;
using tavel::wakeApplication;

/// A window that raises an exception for each application-defined event.
@interface TavelRaisingWindow : NSWindow {
@public
    int _events;
}
@end

@implementation TavelRaisingWindow

- (void)sendEvent:(NSEvent*)event {
    if ([event type] != NSEventTypeApplicationDefined)
        return;
    ++_events;
    [NSException raise:NSGenericException format:@"This window refuses events."];
}

@end

/// Calls a function when a timer fires.
@interface TavelTimerTarget : NSObject {
@public
    const std::function<void()>* _function;
}
- (void)fire:(NSTimer*)timer;
@end

@implementation TavelTimerTarget

- (void)fire:(NSTimer*)timer {
    (void)timer;
    (*_function)();
}

@end

/// Counts how often the application has finished launching, from the start of the process. GNUstep sends the
/// notification of the end only from -run.
@interface TavelLaunches : NSObject
+ (void)count:(NSNotification*)notification;
@end

static int launches = 0;

@implementation TavelLaunches

+ (void)load {
    @autoreleasepool {
        [[NSNotificationCenter defaultCenter] addObserver:self
                                                 selector:@selector(count:)
                                                     name:NSApplicationWillFinishLaunchingNotification
                                                   object:nil];
    }
}

+ (void)count:(NSNotification*)notification {
    (void)notification;
    ++launches;
}

@end

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

std::size_t allocatedBytes() {
#if __has_feature(address_sanitizer)
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

class ApplicationEvents : public testing::Test {
protected:
    ApplicationEvents() {
        tavel::becomeAccessoryApplication();
        // Take the events that every new application receives.
        while (lengthOfPass(milliseconds(50)) < milliseconds(50)) {
        }
    }

    static Clock::duration lengthOfPass(milliseconds longestWait) {
        const auto start = Clock::now();
        passOneEvent(longestWait);
        return Clock::now() - start;
    }

    /// Calls the function on this thread during the next pass that waits.
    void callDuringWait(const std::function<void()>& function) {
        function_ = function;
        @autoreleasepool {
            TavelTimerTarget* const target = [[[TavelTimerTarget alloc] init] autorelease];
            target->_function = &function_;
            [NSTimer scheduledTimerWithTimeInterval:0.001
                                             target:target
                                           selector:@selector(fire:)
                                           userInfo:nil
                                            repeats:NO];
        }
    }

private:
    std::function<void()> function_;
};

TEST_F(ApplicationEvents, launchingIsFinishedOnce) {
    tavel::becomeAccessoryApplication();
    EXPECT_EQ(launches, 1);
}

TEST_F(ApplicationEvents, aPassEndsAfterTheLongestWait) {
    EXPECT_GE(lengthOfPass(milliseconds(50)), milliseconds(50));
}

TEST_F(ApplicationEvents, aPassOfNoTimeDoesNotWait) {
    EXPECT_LT(lengthOfPass(milliseconds(0)), seconds(20));
}

TEST_F(ApplicationEvents, aWakeUpBeforeTheWaitEndsIt) {
    wakeApplication();
    EXPECT_LT(lengthOfPass(minutes(10)), seconds(20));
}

TEST_F(ApplicationEvents, aWakeUpEndsOnePass) {
    wakeApplication();
    passOneEvent(minutes(10));
    EXPECT_GE(lengthOfPass(milliseconds(50)), milliseconds(50));
}

TEST_F(ApplicationEvents, aWakeUpByAnotherThreadBeforeTheWaitEndsIt) {
    std::thread(wakeApplication).join();
    EXPECT_LT(lengthOfPass(minutes(10)), seconds(20));
}

TEST_F(ApplicationEvents, aWakeUpDuringTheWaitEndsIt) {
    callDuringWait(wakeApplication);
    EXPECT_LT(lengthOfPass(minutes(10)), seconds(20));
}

TEST_F(ApplicationEvents, aWakeUpByAnotherThreadDuringTheWaitEndsIt) {
    std::thread other;
    callDuringWait([&] { other = std::thread(wakeApplication); });
    EXPECT_LT(lengthOfPass(minutes(10)), seconds(20));
    other.join();
}

TEST_F(ApplicationEvents, anExceptionOfAHandlerDoesNotLeaveThePass) {
    @autoreleasepool {
        TavelRaisingWindow* const window =
            [[[TavelRaisingWindow alloc] initWithContentRect:NSMakeRect(0, 0, 10, 10)
                                                   styleMask:NSWindowStyleMaskBorderless
                                                     backing:NSBackingStoreBuffered
                                                       defer:NO] autorelease];
        [window setReleasedWhenClosed:NO];
        for (int round = 0; round < 2; ++round) {
            [NSApp postEvent:[NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                                location:NSMakePoint(0, 0)
                                           modifierFlags:0
                                               timestamp:0
                                            windowNumber:[window windowNumber]
                                                 context:nil
                                                 subtype:0
                                                   data1:0
                                                   data2:0]
                     atStart:YES];
            passOneEvent(minutes(10));
            EXPECT_EQ(window->_events, round + 1);
        }
    }
}

TEST_F(ApplicationEvents, passesLeaveNothingBehind) {
    constexpr int passes = 10'000;
    const auto pass = [](int count) {
        for (int i = 0; i < count; ++i) {
            wakeApplication();
            passOneEvent(minutes(10));
        }
    };
    pass(passes / 10);
    const std::size_t before = allocatedBytes();
    pass(passes);
    EXPECT_LT(allocatedBytes(), before + passes);
}

} // namespace
