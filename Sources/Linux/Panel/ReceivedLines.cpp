#include "Linux/Panel/ReceivedLines.h"

#include <unistd.h>

#include <array>
#include <cerrno>

namespace tavel {

bool ReceivedLines::receive(int descriptor) {
    std::array<char, 4096> buffer{};
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count < 0)
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
    received_.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0 && (received_.size() <= longestLine || received_.find('\n') != std::string::npos);
}

std::optional<std::string> ReceivedLines::next() {
    const std::size_t lineFeed = received_.find('\n');
    if (lineFeed == std::string::npos)
        return std::nullopt;
    std::string line = received_.substr(0, lineFeed);
    received_.erase(0, lineFeed + 1);
    return line;
}

} // namespace tavel
