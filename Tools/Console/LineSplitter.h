#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace tavel {

/// Makes lines of any length out of bytes that come in pieces of any length. For descriptors that an event
/// loop watches: unlike a reader of its own it never waits for the rest of a line.
class LineSplitter {
public:
    using LineHandler = std::function<void(std::string_view line)>;

    /// Hands over the lines that end in `bytes`, without their terminators (LF or CRLF).
    void append(std::string_view bytes, const LineHandler& handleLine);

    /// Hands over what stands behind the last terminator, if anything does.
    void finish(const LineHandler& handleLine);

private:
    std::string rest_; // holds no line feed
};

} // namespace tavel
