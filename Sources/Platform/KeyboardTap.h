#pragma once

#include <cstdint>
#include <functional>
#include <span>

namespace tavel {

enum class KeyEventType { keyDown, keyUp, tapDisabledByTimeout, tapDisabledByUserInput };

/// A key's event in the home platform's terms (Quartz Event Services): the key codes are its own, and other
/// platforms translate.
struct KeyEvent {
    KeyEventType type = KeyEventType::keyDown;
    std::int64_t keyCode = 0;
    std::uint64_t flags = 0;   // the modifiers that are held, and bits that are of no interest
    std::int64_t userData = 0; // what the poster of a synthetic event wrote into it; 0 for a real key
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
    /// Decides for one event; the user's keyboard waits for the answer. Runs on the main thread, in the event
    /// loop or at once.
    using Handler = std::function<KeyVerdict(const KeyEvent&)>;

    virtual ~KeyboardTap() = default;

    /// Starts tapping, enabled. False if the system refuses (the user has not permitted it, or there is no
    /// keyboard to tap); it may be tried again. Not called again after it succeeded.
    virtual bool create(Handler handler) = 0;

    /// Switches a created tap on or off. A key that was swallowed stays with the tap until it is released.
    virtual void setEnabled(bool enabled) = 0;

    /// Whether the key is down at this moment.
    virtual bool isKeyDown(std::int64_t keyCode) = 0;

    /// Types the keys into the frontmost program, in this order. One that cannot be typed is left out.
    virtual void post(std::span<const KeyEvent> events) = 0;
};

} // namespace tavel
