#include "Linux/Images/ImageExchange.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace tavel {
namespace {

constexpr std::array<std::string_view, 4> taskNames{"measure", "has-alpha", "encode-png", "encode-jpeg"};

constexpr std::size_t longestNumber = 32;

/// The shortest text from which `parsed` reads the same number, in any locale.
template <typename Number>
std::string printed(Number number) {
    std::array<char, longestNumber> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), result.ptr};
}

template <typename Number>
bool parsed(const std::string& text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

} // namespace

std::vector<std::string> argumentsFor(const ImageRequest& request) {
    const std::string_view task = taskNames.at(static_cast<std::size_t>(request.task));
    return {printed(request.agent), std::string(task), request.typeIdentifier, printed(request.quality)};
}

std::optional<ImageRequest> readArguments(const std::vector<std::string>& arguments) {
    constexpr std::size_t count = 4;
    ImageRequest request;
    if (arguments.size() != count || !parsed(arguments[0], request.agent) ||
        !parsed(arguments[3], request.quality))
        return std::nullopt;
    const auto* const task = std::find(taskNames.begin(), taskNames.end(), arguments[1]);
    if (task == taskNames.end())
        return std::nullopt;
    request.task = static_cast<ImageTask>(task - taskNames.begin());
    request.typeIdentifier = arguments[2];
    return request;
}

} // namespace tavel
