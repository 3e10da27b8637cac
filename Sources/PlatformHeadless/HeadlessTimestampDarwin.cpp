#include "PlatformHeadless/HeadlessTimestamp.h"

#include <array>
#include <ctime>

namespace tavel {

/// In the common calendar and European digits: the date library of the other systems is not asked for here,
/// as this system has its own.
std::function<std::string()> makeHeadlessTimestamp(std::function<void(const std::string& message)>) {
    return [] {
        const std::time_t now = std::time(nullptr);
        std::tm parts{};
        localtime_r(&now, &parts);
        std::array<char, 64> text{};
        return std::string(text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d-%H%M%S", &parts));
    };
}

} // namespace tavel
