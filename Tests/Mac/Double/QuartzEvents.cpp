#include "Tests/Mac/Double/QuartzEvents.h"

#include "Tests/Mac/Double/MachPort.h"
#include "Tests/Mac/Double/MainLoop.h"

#include <algorithm>

using namespace tavel::doubles;

namespace {

constexpr std::uint32_t flagsChanged = 12;

/// The modifier keys' codes are contiguous, from right Command to Function.
constexpr bool isModifier(CGKeyCode key) {
    return key >= 54 && key <= 63;
}

/// A double of a tap's CFMachPort. It receives messages until it is invalidated or freed.
struct TapPort final : Object {
    static constexpr Kind ofKind = machPortKind;
    TapPort();
    ~TapPort() override;

    CGEventTapCallBack callBack = nullptr;
    void* userInfo = nullptr;
    CGEventTapProxy proxy = nullptr; // for posting from within the callback, which no adaptor does
    CGEventMask mask = 0;
    bool isValid = true;
    bool isEnabled = true;
    bool isCalled = false; // its callback runs
};

std::vector<TapPort*> ports;

TapPort::TapPort() : Object(ofKind) {
    ports.push_back(this);
}

TapPort::~TapPort() {
    if (isValid)
        refuse("A tap was released without being invalidated: the system keeps it in its table.");
    std::erase(ports, this);
}

struct Event final : Object {
    static constexpr Kind ofKind = eventKind;
    explicit Event(const QuartzEvent& itsContent) : Object(ofKind), content(itsContent) {}
    QuartzEvent content;
};

bool isOfInterest(const TapPort& tap, std::uint32_t type) {
    return tap.isValid && tap.isEnabled && type < 64 && (tap.mask >> type & 1) != 0;
}

CGEventRef call(TapPort& tap, std::uint32_t type, CGEventRef event) {
    tap.isCalled = true;
    const CGEventRef given = tap.callBack(tap.proxy, static_cast<CGEventType>(type), event, tap.userInfo);
    tap.isCalled = false;
    return given;
}

/// Asks the tap, which borrows the event. Returns whether it lets the event pass.
bool letsPass(TapPort& tap, std::uint32_t type, Event& event) {
    const auto borrowed = refTo<CGEventRef>(event);
    const CGEventRef given = call(tap, type, borrowed);
    if (given != nullptr && given != borrowed)
        refuse("A tap returned another event.");
    if (event.references() != 1)
        refuse("A tap released or retained an event that it does not own.");
    return given != nullptr;
}

template <typename Condition>
Passage passTapsIf(const QuartzEvent& event, CFRunLoopMode mode, Condition seesIt) {
    for (TapPort* const tap : std::vector(ports)) {
        if (!seesIt(*tap))
            continue;
        if (quartz().refusesTaps || !isServed(*tap, mode))
            return Passage::heldUp;
        const Reference held = Reference::to(refTo<CFTypeRef>(*new Event(event)));
        if (!letsPass(*tap, event.type, objectAt<Event>(held.get())))
            return Passage::swallowed;
    }
    return Passage::passed;
}

} // namespace

namespace tavel::doubles {

Quartz& quartz() {
    static Quartz quartz;
    return quartz;
}

void resetQuartz() {
    quartz() = {};
}

Passage passTaps(const QuartzEvent& event, CFRunLoopMode mode) {
    return passTapsIf(event, mode, [&](const TapPort& tap) { return isOfInterest(tap, event.type); });
}

Passage askTaps(const QuartzEvent& event) {
    return passTapsIf(event, kCFRunLoopDefaultMode, [](const TapPort& tap) { return tap.isValid; });
}

void disableTaps(CGEventType why) {
    CGEventRef noEvent = nullptr;
    for (TapPort* const tap : std::vector(ports)) {
        if (!tap->isValid || !tap->isEnabled)
            continue;
        tap->isEnabled = false;
        if (isServed(*tap, kCFRunLoopDefaultMode) && call(*tap, why, noEvent) != nullptr)
            refuse("A tap returned an event where it was given none.");
    }
}

int livingTaps() {
    return static_cast<int>(std::ranges::count_if(ports, [](const TapPort* tap) { return tap->isValid; }));
}

int enabledTaps() {
    return static_cast<int>(
        std::ranges::count_if(ports, [](const TapPort* tap) { return tap->isValid && tap->isEnabled; }));
}

bool isValidPort(CFTypeRef port) {
    return objectAt<TapPort>(port).isValid;
}

} // namespace tavel::doubles

/// Also invalidates the port's sources, which leave the run loop.
void CFMachPortInvalidate(CFMachPortRef port) {
    auto& tap = objectAt<TapPort>(port);
    if (tap.isCalled)
        refuse("A tap was invalidated by its own callback, after which the system still uses it.");
    tap.isValid = false;
    removeSourcesOf(tap);
}

CFMachPortRef CGEventTapCreate(CGEventTapLocation location, CGEventTapPlacement place,
                               CGEventTapOptions options, CGEventMask eventsOfInterest,
                               CGEventTapCallBack callBack, void* userInfo) {
    quartz().requests.push_back({location, place, options, eventsOfInterest});
    if (quartz().refusesTaps || eventsOfInterest == 0)
        return nullptr;
    auto& tap = *new TapPort;
    tap.callBack = callBack;
    tap.userInfo = userInfo;
    tap.mask = eventsOfInterest;
    return refTo<CFMachPortRef>(tap);
}

void CGEventTapEnable(CFMachPortRef tap, bool enable) {
    if (enable && quartz().refusesTaps)
        ++quartz().stalls;
    objectAt<TapPort>(tap).isEnabled = enable;
}

int64_t CGEventGetIntegerValueField(CGEventRef event, CGEventField field) {
    const QuartzEvent& content = objectAt<Event>(event).content;
    switch (field) {
    case kCGKeyboardEventAutorepeat:
        return content.autorepeat;
    case kCGKeyboardEventKeycode:
        return content.keyCode;
    case kCGEventSourceUserData:
        return content.userData;
    }
    refuse("The double does not know this field of an event.");
}

void CGEventSetIntegerValueField(CGEventRef event, CGEventField field, int64_t value) {
    if (field != kCGEventSourceUserData)
        refuse("The double sets no field of an event but its user data.");
    objectAt<Event>(event).content.userData = value;
}

CGEventFlags CGEventGetFlags(CGEventRef event) {
    return objectAt<Event>(event).content.flags;
}

void CGEventSetFlags(CGEventRef event, CGEventFlags flags) {
    objectAt<Event>(event).content.flags = flags;
}

/// A modifier key has its own event type. Each new event starts with the modifiers that are held.
CGEventRef CGEventCreateKeyboardEvent(CGEventSourceRef, CGKeyCode key, bool down) {
    if (quartz().keysWithoutEvent.contains(key))
        return nullptr;
    const std::uint32_t keyType = down ? kCGEventKeyDown : kCGEventKeyUp;
    return refTo<CGEventRef>(
        *new Event({isModifier(key) ? flagsChanged : keyType, key, quartz().heldModifiers, 0}));
}

void CGEventPost(CGEventTapLocation tap, CGEventRef event) {
    if (event != nullptr)
        quartz().posted.push_back({tap, objectAt<Event>(event).content});
}

bool CGEventSourceKeyState(CGEventSourceStateID state, CGKeyCode key) {
    return quartz().keysDown[state].contains(key);
}
