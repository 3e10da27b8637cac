#import <AppKit/AppKit.h>
#include <fcntl.h>
#import <objc/runtime.h>
#include <unistd.h>

namespace {

using PostEvent = void (*)(id, SEL, NSEvent*, BOOL);
using Display = void (*)(id, SEL);

PostEvent postEventOfMainThread = nullptr;
Display displayOfMenu = nullptr;

/// The run loop modes that wait for events.
NSArray* waitingModes() {
    return [NSArray
        arrayWithObjects:NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode, nil];
}

template <typename Implementation>
Implementation replace(Class owner, SEL selector, Implementation replacement) {
    return reinterpret_cast<Implementation>(method_setImplementation(class_getInstanceMethod(owner, selector),
                                                                     reinterpret_cast<IMP>(replacement)));
}

void displayUnlessMain(id self, SEL selector) {
    if (self != [NSApp mainMenu])
        displayOfMenu(self, selector);
}

} // namespace

/// A pipe that the main run loop watches: a loop that is already waiting does not check the event queue again
/// by itself.
@interface TavelWaitEnd : NSObject
+ (void)endWait;
@end

@implementation TavelWaitEnd

static int pipeEnds[2];

/// Runs on the main thread, with the first event.
+ (void)initialize {
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
        [NSException raise:NSGenericException format:@"No pipe can be made."];
    for (NSString* mode in waitingModes())
        [[NSRunLoop currentRunLoop] addEvent:reinterpret_cast<void*>(static_cast<intptr_t>(pipeEnds[0]))
                                        type:ET_RDESC
                                     watcher:reinterpret_cast<id<RunLoopEvents>>(self)
                                     forMode:mode];
}

+ (void)endWait {
    // If the pipe is full, its content ends the wait.
    [[maybe_unused]] const ssize_t written = write(pipeEnds[1], "", 1);
}

+ (void)receivedEvent:(void*)data type:(RunLoopEventType)type extra:(void*)extra forMode:(NSString*)mode {
    (void)data;
    (void)type;
    (void)extra;
    (void)mode;
    char bytes[4096];
    while (read(pipeEnds[0], bytes, sizeof(bytes)) > 0) {
        // Drain the pipe: one wake-up serves any number of events.
    }
}

@end

/// Carries an event to the main thread.
@interface TavelPostedEvent : NSObject {
@public
    NSEvent* _event; // owned
    BOOL _isFirst;
}
@end

@implementation TavelPostedEvent

- (void)dealloc {
    [_event release];
    [super dealloc];
}

- (void)post {
    [NSApp postEvent:_event atStart:_isFirst];
}

@end

namespace {

void postEventOfAnyThread(id self, SEL selector, NSEvent* event, BOOL atStart) {
    if ([NSThread isMainThread]) {
        postEventOfMainThread(self, selector, event, atStart);
        [TavelWaitEnd endWait];
        return;
    }
    TavelPostedEvent* const posted = [[[TavelPostedEvent alloc] init] autorelease];
    posted->_event = [event retain];
    posted->_isFirst = atStart;
    [posted performSelectorOnMainThread:@selector(post) withObject:nil waitUntilDone:NO modes:waitingModes()];
}

} // namespace

@implementation NSApplication (TavelAdditions)

+ (void)load {
    postEventOfMainThread = replace<PostEvent>(objc_getClass("NSApplication"), @selector(postEvent:atStart:),
                                               postEventOfAnyThread);
}

- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
    if (policy != NSApplicationActivationPolicyAccessory)
        return NO;
    if (displayOfMenu != nullptr)
        return YES;
    displayOfMenu = replace<Display>(objc_getClass("NSMenu"), @selector(display), displayUnlessMain);
    [[self iconWindow] orderOut:nil];
    return YES;
}

- (void)activate {
    [self activateIgnoringOtherApps:YES];
}

@end
