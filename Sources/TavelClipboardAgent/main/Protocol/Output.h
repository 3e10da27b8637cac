#pragma once

#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace tavel {

/// The only writer to the parent. It queues lines, and a thread of its own writes them one after the other:
/// so nobody but this thread waits for a parent that does not read. Any thread may call it.
class Output {
public:
    /// Writes to `descriptor`, which stays the caller's. The thread starts with the first message.
    explicit Output(int descriptor) : descriptor_(descriptor) {}

    /// Waits until everything is written.
    ~Output();

    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Queues the message as one line. Never waits for the parent. Drops a message that JSON cannot hold (a
    /// path that is not UTF-8), and later one that cannot be written. Writing to a pipe that nobody reads
    /// ends the process by SIGPIPE, as it does by default (POSIX write). Throws std::bad_alloc; nothing is
    /// queued then.
    void emit(const AgentMessage& message);

    /// Starts the thread if it could not be started when a message came. To be called now and then while it
    /// returns false: lines wait, and there is still no thread for them.
    bool startWriting();

    /// The number of lines that were queued so far.
    std::uint64_t queuedLines() const;

    /// Whether the first `lines` of all lines have left the queue.
    bool hasWritten(std::uint64_t lines) const;

    /// Waits until everything is written, but no longer than `longestWait`. Returns whether it is.
    bool waitUntilWritten(std::chrono::milliseconds longestWait);

    /// A number that changes whenever the parent has taken some more of the output.
    std::uint64_t progress() const;

private:
    bool startThread();
    void writeQueue();
    void write(std::string_view line);

    int descriptor_;
    mutable std::mutex lock_; // never held during a write
    std::condition_variable changed_;
    std::deque<std::string> queue_; // the first line is being written
    std::uint64_t queued_ = 0;
    std::uint64_t progress_ = 0;
    bool ending_ = false;
    std::thread writer_;
};

} // namespace tavel
