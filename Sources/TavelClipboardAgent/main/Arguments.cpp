#include "TavelClipboardAgent/main/Arguments.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>

namespace tavel {

std::int32_t parentPID(std::span<const std::string> arguments) {
    const auto flag = std::ranges::find(arguments, "--parent-pid");
    if (flag == arguments.end() || flag + 1 == arguments.end())
        return 0;
    std::string_view text = *(flag + 1);
    // from_chars takes a minus sign but no plus sign, and must not be led to take both.
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-'))
            return 0;
    }
    std::int32_t identifier = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), identifier);
    return error == std::errc() && end == text.data() + text.size() ? identifier : 0;
}

std::optional<std::string> testPasteboardName(std::span<const std::string> arguments) {
    const auto flag = std::ranges::find(arguments, "--test-pasteboard");
    if (flag == arguments.end() || flag + 1 == arguments.end())
        return std::nullopt;
    return *(flag + 1);
}

} // namespace tavel
