#include "Tests/Mac/Double/QuartzEvents.h"

#include "Tests/Mac/Double/MachPort.h"
#include "Tests/Mac/Double/MainLoop.h"

#include <algorithm>

using namespace tavel::doubles;

namespace {

constexpr std::uint32_t flagsChanged = 12;

/// The keys from Command on the right to Function have neighbouring codes.
constexpr bool isModifier(CGKeyCode key) {
    return key >= 54 && key <= 63;
}

/// CFMachPort, as far as it is a tap's. Messages come in until it is made invalid, or goes.
struct TapPort final : Object {
    static constexpr Kind ofKind = machPortKind;
    TapPort();
    ~TapPort() override;

    CGEventTapCallBack callBack = nullptr;
    void* userInfo = nullptr;
    CGEventTapProxy proxy = nullptr; // for posting from within, which nobody does
    CGEventMask mask = 0;
    bool isValid = true;
    bool isEnabled = true;
};

std::vector<TapPort*> ports;

TapPort::TapPort() : Object(ofKind) {
    ports.push_back(this);
}

TapPort::~TapPort() {
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

/// The tap's answer. The event is lent to it.
bool letsPass(TapPort& tap, std::uint32_t type, Event& event) {
    const auto lent = refTo<CGEventRef>(event);
    const CGEventRef given = tap.callBack(tap.proxy, static_cast<CGEventType>(type), lent, tap.userInfo);
    if (given != nullptr && given != lent)
        refuse("Another event came back from a tap.");
    if (event.references() != 1)
        refuse("A tap gave back what was only lent to it, or kept it.");
    return given != nullptr;
}

template <typename Condition>
Passage passTapsIf(const QuartzEvent& event, CFRunLoopMode mode, Condition seesIt) {
    for (TapPort* const tap : std::vector(ports)) {
        if (!seesIt(*tap))
            continue;
        if (!isServed(*tap, mode))
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
        if (isServed(*tap, kCFRunLoopDefaultMode) &&
            tap->callBack(tap->proxy, why, noEvent, tap->userInfo) != nullptr)
            refuse("An event came back from a tap that was given none.");
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

/// The port's sources become invalid with it, and leave the run loop.
void CFMachPortInvalidate(CFMachPortRef port) {
    auto& tap = objectAt<TapPort>(port);
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
    objectAt<TapPort>(tap).isEnabled = enable;
}

int64_t CGEventGetIntegerValueField(CGEventRef event, CGEventField field) {
    const QuartzEvent& content = objectAt<Event>(event).content;
    switch (field) {
    case kCGKeyboardEventKeycode:
        return content.keyCode;
    case kCGEventSourceUserData:
        return content.userData;
    }
    refuse("An event's field that is not known here.");
}

void CGEventSetIntegerValueField(CGEventRef event, CGEventField field, int64_t value) {
    if (field != kCGEventSourceUserData)
        refuse("Only an event's user data are set here.");
    objectAt<Event>(event).content.userData = value;
}

CGEventFlags CGEventGetFlags(CGEventRef event) {
    return objectAt<Event>(event).content.flags;
}

void CGEventSetFlags(CGEventRef event, CGEventFlags flags) {
    objectAt<Event>(event).content.flags = flags;
}

/// A modifier key's event is of a type of its own. Every event starts with the modifiers that are held.
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
