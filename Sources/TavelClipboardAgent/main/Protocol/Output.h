#pragma once

#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"

#include <mutex>

namespace tavel {

/// The process's one writer of messages to the parent. Any thread.
class Output {
public:
    /// Writes to `descriptor`, which stays the caller's.
    explicit Output(int descriptor) : descriptor_(descriptor) {}

    /// Writes the message as one line, as soon as it is called. Blocks while the parent does not read. A
    /// message that is not valid JSON (a path that is not UTF-8) is dropped, and so is one that cannot be
    /// written; a closed pipe ends the process by the system's default for SIGPIPE.
    void emit(const AgentMessage& message);

private:
    int descriptor_;
    std::mutex lock_; // held only around the write, so that lines never mix
};

} // namespace tavel
