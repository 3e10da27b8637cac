#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace tavel {

/// What a descriptor gives, in lines. Its other end is not trusted.
class ReceivedLines {
public:
    static constexpr std::size_t longestLine = std::size_t{64} * 1024;

    /// Takes in one read's worth; waits only if the descriptor is a blocking one and has nothing. False if
    /// nothing more is to come: the input has ended or failed, or a line is too long.
    bool receive(int descriptor);

    /// The next line that is there whole, without its line feed.
    std::optional<std::string> next();

private:
    std::string received_;
};

} // namespace tavel
