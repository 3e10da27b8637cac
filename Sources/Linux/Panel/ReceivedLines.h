#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace tavel {

/// Splits what a descriptor delivers into lines. The peer is not trusted.
class ReceivedLines {
public:
    static constexpr std::size_t longestLine = std::size_t{64} * 1024;

    /// Reads once. Waits only if the descriptor is blocking and has no data. False at the end of the input,
    /// after a read error, or when a line is too long: call it no more then.
    bool receive(int descriptor);

    /// The next complete line, without its line feed.
    std::optional<std::string> next();

private:
    std::string received_;
};

} // namespace tavel
