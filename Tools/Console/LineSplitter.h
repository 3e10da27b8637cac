#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace tavel {

/// Assembles lines of any length from pieces of any length. For descriptors that an event loop watches: it
/// never waits for the rest of a line.
class LineSplitter {
public:
    using LineHandler = std::function<void(std::string_view line)>;

    /// Passes on each line that `bytes` complete, without its terminator (LF or CRLF).
    void append(std::string_view bytes, const LineHandler& handleLine);

    /// Passes on what follows the last terminator, if anything does.
    void finish(const LineHandler& handleLine);

private:
    std::string rest_; // the incomplete last line
};

} // namespace tavel
