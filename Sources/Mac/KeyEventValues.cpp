#include "Mac/KeyEventValues.h"

#include <limits>

namespace tavel {

std::optional<KeyEventType> keyEventTypeFrom(std::uint32_t type) {
    switch (type) {
    case 10: // kCGEventKeyDown
        return KeyEventType::keyDown;
    case 11: // kCGEventKeyUp
        return KeyEventType::keyUp;
    case 0xFFFFFFFE: // kCGEventTapDisabledByTimeout
        return KeyEventType::tapDisabledByTimeout;
    case 0xFFFFFFFF: // kCGEventTapDisabledByUserInput
        return KeyEventType::tapDisabledByUserInput;
    default:
        return std::nullopt;
    }
}

std::optional<bool> pressesKey(KeyEventType type) {
    switch (type) {
    case KeyEventType::keyDown:
        return true;
    case KeyEventType::keyUp:
        return false;
    case KeyEventType::tapDisabledByTimeout:
    case KeyEventType::tapDisabledByUserInput:
        break;
    }
    return std::nullopt;
}

std::optional<std::uint16_t> virtualKeyFrom(std::int64_t keyCode) {
    if (keyCode < 0 || keyCode > std::numeric_limits<std::uint16_t>::max())
        return std::nullopt;
    return static_cast<std::uint16_t>(keyCode);
}

} // namespace tavel
