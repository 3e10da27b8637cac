#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace tavel {

enum class KeyEventType { keyDown, keyUp, tapDisabledByTimeout, tapDisabledByUserInput };

/// A key event in the home platform's terms (Quartz Event Services). Other platforms translate theirs to its
/// key codes and flags.
struct KeyEvent {
    KeyEventType type = KeyEventType::keyDown;
    std::int64_t keyCode = 0;
    std::uint64_t flags = 0;   // the modifiers that are held, among other bits
    std::int64_t userData = 0; // set by the poster of a synthetic event; 0 for a real key
    bool isRepeat = false;     // of a keyDown: the key is held, and repeats by itself
};

namespace keyCode {
inline constexpr std::int64_t v = 9;
inline constexpr std::int64_t rightCommand = 54;
inline constexpr std::int64_t leftCommand = 55;
} // namespace keyCode

namespace keyFlag {
inline constexpr std::uint64_t shift = 0x20000;
inline constexpr std::uint64_t control = 0x40000;
inline constexpr std::uint64_t option = 0x80000;
inline constexpr std::uint64_t command = 0x100000; // Control where the platform has no such key
} // namespace keyFlag

enum class KeyVerdict { pass, swallow };

/// Sees the keys that the user types in other programs, before those programs do. Main thread only.
class KeyboardTap {
public:
    /// Decides for one event; the keyboard is frozen until it returns, or until the system waits no longer
    /// and lets the key pass. An event tapDisabledByTimeout follows then, at once if the late verdict was to
    /// swallow the key. Runs on the main thread, in the event loop or during a call of this interface.
    using Handler = std::function<KeyVerdict(const KeyEvent&)>;

    virtual ~KeyboardTap() = default;

    /// Makes the tap and starts tapping, enabled. False if the system refuses (the user has not permitted it,
    /// or there is no keyboard to tap); the caller may then try again. Not called while there is a tap, nor
    /// by the handler.
    virtual bool create(Handler handler) = 0;

    /// Why the latest `create` has failed: a clause for people. Empty if it has not, or nothing is known.
    virtual std::string refusal() { return {}; }

    /// Removes the tap, if there is one: no key waits for the handler any more. `create` makes a new one. Not
    /// called by the handler.
    virtual void remove() = 0;

    /// Enables or disables the tap, if there is one. A key that was swallowed is swallowed until its release,
    /// which a disabled tap may not see. Where `canLosePermission`, enable a tap only if `isPermitted`.
    virtual void setEnabled(bool enabled) = 0;

    /// Whether the user can take back the permission to tap while there is a tap. Such a tap holds up every
    /// key of the session for as long as the system waits for it, some 30 seconds, and so does one that is
    /// enabled again. So its owner asks `isPermitted` from time to time. Always the same answer.
    virtual bool canLosePermission() = 0;

    /// Whether the system would permit a tap now. Costs a request to the system; free, and true, where the
    /// permission cannot be lost. The handler may call it.
    virtual bool isPermitted() = 0;

    /// Whether the key is down now.
    virtual bool isKeyDown(std::int64_t keyCode) = 0;

    /// Types the keys into the frontmost program, in this order. Keys that cannot be typed are left out.
    virtual void post(std::span<const KeyEvent> events) = 0;
};

} // namespace tavel
