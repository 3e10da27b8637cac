#pragma once

#include <cstdint>
#include <functional>

namespace tavel {

enum class KeyEventType { keyDown, keyUp, tapDisabledByTimeout, tapDisabledByUserInput };

struct KeyEvent {
    KeyEventType type = KeyEventType::keyDown;
    std::int64_t keyCode = 0;  // of the home platform, where 9 is V
    std::uint64_t flags = 0;   // its modifier flags, where 0x100000 is Command
    std::int64_t userData = 0; // what the poster of a synthetic event wrote into it; 0 for a real key
};

enum class KeyVerdict { pass, swallow };

/// Sees the keys that the user types in other programs, before those programs do. Main thread only.
class KeyboardTap {
public:
    /// Decides for one event; the user's keyboard waits for the answer.
    using Handler = std::function<KeyVerdict(const KeyEvent&)>;

    virtual ~KeyboardTap() = default;

    /// Starts tapping, enabled. False if the system refuses (the user has not permitted it, or there is no
    /// keyboard to tap); it may be tried again. Not called again after it succeeded.
    virtual bool create(Handler handler) = 0;

    /// Switches a created tap on or off.
    virtual void setEnabled(bool enabled) = 0;

    /// Whether the key is down at this moment.
    virtual bool isKeyDown(std::int64_t keyCode) = 0;

    /// Types Command+V into the frontmost program. The events carry `userData`, by which the handler knows
    /// them again.
    virtual void postPasteShortcut(std::int64_t userData) = 0;
};

} // namespace tavel
