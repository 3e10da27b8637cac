#pragma once

#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"

#include <mutex>

namespace tavel {

/// The only writer to the parent. Thread-safe.
class Output {
public:
    /// Writes to `descriptor`, which stays the caller's.
    explicit Output(int descriptor) : descriptor_(descriptor) {}

    /// Writes the message as one line, without buffering. Blocks while the parent does not read. Drops a
    /// message that JSON cannot hold (a path that is not UTF-8), and one that cannot be written. Writing to a
    /// pipe that nobody reads ends the process by SIGPIPE, as it does by default (POSIX write).
    void emit(const AgentMessage& message);

private:
    int descriptor_;
    std::mutex lock_; // held only around the write, so that lines do not interleave
};

} // namespace tavel
