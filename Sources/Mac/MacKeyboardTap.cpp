#include "Mac/MacKeyboardTap.h"

#include "Mac/KeyEventValues.h"

#include <utility>

namespace tavel {

namespace {

constexpr CGEventMask keyEvents = CGEventMaskBit(kCGEventKeyDown) | CGEventMaskBit(kCGEventKeyUp);

// KeyEventValues has these numbers without the system's headers.
static_assert(kCGEventKeyDown == 10 && kCGEventKeyUp == 11);
static_assert(kCGEventTapDisabledByTimeout == 0xFFFFFFFE && kCGEventTapDisabledByUserInput == 0xFFFFFFFF);

/// Posted where the keyboard's driver would: so the event comes by all taps, ours too, which knows it by its
/// user data.
void postKey(const KeyEvent& event) {
    const auto presses = pressesKey(event.type);
    const auto key = virtualKeyFrom(event.keyCode);
    if (!presses || !key)
        return;
    const auto created = CFRef<CGEventRef>::adopt(CGEventCreateKeyboardEvent(nullptr, *key, *presses));
    if (!created)
        return;
    // Without flags of its own it would have those of the keys that the user holds.
    CGEventSetFlags(created.get(), event.flags);
    CGEventSetIntegerValueField(created.get(), kCGEventSourceUserData, event.userData);
    CGEventPost(kCGHIDEventTap, created.get());
}

} // namespace

MacKeyboardTap::~MacKeyboardTap() {
    if (tap_)
        CFMachPortInvalidate(tap_.get()); // no event comes any more
}

bool MacKeyboardTap::create(Handler handler) {
    auto tap = CFRef<CFMachPortRef>::adopt(CGEventTapCreate(
        kCGSessionEventTap, kCGTailAppendEventTap, kCGEventTapOptionDefault, keyEvents, tapped, this));
    if (!tap)
        return false;
    auto source =
        CFRef<CFRunLoopSourceRef>::adopt(CFMachPortCreateRunLoopSource(kCFAllocatorDefault, tap.get(), 0));
    if (!source) {
        // A tap that nobody serves would hold up every key.
        CFMachPortInvalidate(tap.get());
        return false;
    }
    handler_ = std::move(handler);
    tap_ = std::move(tap);
    source_ = std::move(source);
    // In all common modes: keys must not wait while a menu is open or a window is dragged.
    CFRunLoopAddSource(CFRunLoopGetMain(), source_.get(), kCFRunLoopCommonModes);
    return true;
}

void MacKeyboardTap::setEnabled(bool enabled) {
    if (tap_)
        CGEventTapEnable(tap_.get(), enabled);
}

bool MacKeyboardTap::isKeyDown(std::int64_t keyCode) {
    const auto key = virtualKeyFrom(keyCode);
    return key && CGEventSourceKeyState(kCGEventSourceStateCombinedSessionState, *key);
}

void MacKeyboardTap::post(std::span<const KeyEvent> events) {
    for (const KeyEvent& event : events)
        postKey(event);
}

/// The event is lent: it is given back as it came, neither kept nor released.
CGEventRef MacKeyboardTap::tapped(CGEventTapProxy, CGEventType type, CGEventRef event, void* tap) noexcept {
    if (tap == nullptr)
        return event;
    return static_cast<const MacKeyboardTap*>(tap)->verdictOf(type, event) == KeyVerdict::swallow ? nullptr
                                                                                                  : event;
}

KeyVerdict MacKeyboardTap::verdictOf(CGEventType type, CGEventRef event) const {
    const auto kind = keyEventTypeFrom(type);
    if (!kind)
        return KeyVerdict::pass;
    if (event == nullptr) // so it can be when the system disabled the tap
        return handler_({*kind});
    return handler_({*kind, CGEventGetIntegerValueField(event, kCGKeyboardEventKeycode),
                     CGEventGetFlags(event), CGEventGetIntegerValueField(event, kCGEventSourceUserData)});
}

} // namespace tavel
