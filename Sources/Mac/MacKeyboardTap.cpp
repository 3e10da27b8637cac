#include "Mac/MacKeyboardTap.h"

#include <limits>
#include <optional>
#include <utility>

namespace tavel {

namespace {

constexpr CGEventMask keyEvents = CGEventMaskBit(kCGEventKeyDown) | CGEventMaskBit(kCGEventKeyUp);

/// nullopt for an event that the handler does not decide about.
std::optional<KeyEventType> keyEventTypeFrom(CGEventType type) {
    switch (type) {
    case kCGEventKeyDown:
        return KeyEventType::keyDown;
    case kCGEventKeyUp:
        return KeyEventType::keyUp;
    case kCGEventTapDisabledByTimeout:
        return KeyEventType::tapDisabledByTimeout;
    case kCGEventTapDisabledByUserInput:
        return KeyEventType::tapDisabledByUserInput;
    default:
        return std::nullopt;
    }
}

/// nullopt if the code does not fit: cut to size, it would be another key's.
std::optional<CGKeyCode> virtualKeyFrom(std::int64_t keyCode) {
    if (keyCode < 0 || keyCode > std::numeric_limits<CGKeyCode>::max())
        return std::nullopt;
    return static_cast<CGKeyCode>(keyCode);
}

/// Posts to the HID tap point, where the keyboard driver posts too. All taps see the event, ours included,
/// which recognises it by its user data.
void postKey(const KeyEvent& event) {
    const auto key = virtualKeyFrom(event.keyCode);
    const bool presses = event.type == KeyEventType::keyDown;
    if (!key || (!presses && event.type != KeyEventType::keyUp))
        return;
    const auto created = CFRef<CGEventRef>::adopt(CGEventCreateKeyboardEvent(nullptr, *key, presses));
    if (!created)
        return;
    // Set even if zero: a new event starts with the modifiers that the user is holding.
    CGEventSetFlags(created.get(), event.flags);
    CGEventSetIntegerValueField(created.get(), kCGEventSourceUserData, event.userData);
    CGEventPost(kCGHIDEventTap, created.get());
}

} // namespace

MacKeyboardTap::~MacKeyboardTap() {
    MacKeyboardTap::remove();
}

CFRef<CFMachPortRef> MacKeyboardTap::newTap(void* userInfo) {
    return CFRef<CFMachPortRef>::adopt(CGEventTapCreate(
        kCGSessionEventTap, kCGTailAppendEventTap, kCGEventTapOptionDefault, keyEvents, tapped, userInfo));
}

bool MacKeyboardTap::create(Handler handler) {
    auto tap = newTap(this);
    if (!tap)
        return false;
    auto source =
        CFRef<CFRunLoopSourceRef>::adopt(CFMachPortCreateRunLoopSource(kCFAllocatorDefault, tap.get(), 0));
    if (!source) {
        // A tap that no run loop serves would hold up every key.
        CFMachPortInvalidate(tap.get());
        return false;
    }
    handler_ = std::move(handler);
    tap_ = std::move(tap);
    source_ = std::move(source);
    // In the common modes: keys must not wait while a menu is open or a window is being dragged.
    CFRunLoopAddSource(CFRunLoopGetMain(), source_.get(), kCFRunLoopCommonModes);
    return true;
}

void MacKeyboardTap::remove() {
    // Stops the callbacks. A tap whose port is only released would stay in the system's list.
    if (tap_)
        CFMachPortInvalidate(tap_.get());
    source_ = {};
    tap_ = {};
}

bool MacKeyboardTap::isPermitted() {
    const auto probe = newTap(nullptr);
    if (!probe)
        return false;
    // At once: it is enabled, and no run loop serves it.
    CFMachPortInvalidate(probe.get());
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

/// The system keeps ownership of the event: it is returned as it came, neither retained nor released.
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
    if (event == nullptr) // possible when the system disabled the tap
        return handler_({*kind});
    return handler_({*kind, CGEventGetIntegerValueField(event, kCGKeyboardEventKeycode),
                     CGEventGetFlags(event), CGEventGetIntegerValueField(event, kCGEventSourceUserData),
                     CGEventGetIntegerValueField(event, kCGKeyboardEventAutorepeat) != 0});
}

} // namespace tavel
