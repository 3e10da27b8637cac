#import <AppKit/AppKit.h>
#include <fcntl.h>
#import <objc/runtime.h>
#include <unistd.h>

#include <utility>

namespace {

using PostEvent = void (*)(id, SEL, NSEvent*, BOOL);
using Activate = void (*)(id, SEL, BOOL);
using Display = void (*)(id, SEL);
using Handle = void (*)(id, SEL, id);

PostEvent postEventOfMainThread = nullptr;
Activate activateAlways = nullptr;
Handle handleEvent = nullptr;
Handle makeKeyAndActivate = nullptr;
Display displayOfMenu = nullptr;
std::function<bool(BOOL)> activationGrants;
bool isHandlingEvent = false;
bool isOrderingFront = false;

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

/// Sets a flag during a call, also of itself.
class Flagged {
public:
    explicit Flagged(bool& flag) : flag_(flag), before_(std::exchange(flag, true)) {}
    ~Flagged() { flag_ = before_; }
    Flagged(const Flagged&) = delete;
    Flagged& operator=(const Flagged&) = delete;

private:
    bool& flag_;
    bool before_;
};

void handleEventFlagged(id self, SEL selector, id event) {
    const Flagged flagged(isHandlingEvent);
    handleEvent(self, selector, event);
}

/// GNUstep's method activates the application, too; Apple's does not.
void makeKeyOnly(id self, SEL selector, id sender) {
    const Flagged flagged(isOrderingFront);
    makeKeyAndActivate(self, selector, sender);
}

void activateIfGranted(id self, SEL selector, BOOL ignoreOtherApps) {
    if (isOrderingFront)
        return;
    if (isHandlingEvent || !activationGrants || activationGrants(ignoreOtherApps))
        activateAlways(self, selector, ignoreOtherApps);
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
    handleEvent = replace<Handle>(objc_getClass("NSWindow"), @selector(sendEvent:), handleEventFlagged);
    makeKeyAndActivate =
        replace<Handle>(objc_getClass("NSWindow"), @selector(makeKeyAndOrderFront:), makeKeyOnly);
    activateAlways = replace<Activate>(objc_getClass("NSApplication"), @selector(activateIgnoringOtherApps:),
                                       activateIfGranted);
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

+ (void)setActivationGrants:(const std::function<bool(BOOL)>&)grants {
    activationGrants = grants;
}

@end
