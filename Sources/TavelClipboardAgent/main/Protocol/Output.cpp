#include "TavelClipboardAgent/main/Protocol/Output.h"

#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/Throughput.h"
#include "TavelClipboardAgent/main/Protocol/Encoder.h"

#include <cerrno>
#include <cstddef>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

/// The usual capacity of a pipe. A longer line is written in pieces of this size, so that `progress` tells a
/// parent that reads slowly from one that does not read.
constexpr std::size_t pieceBytes = std::size_t{64} * 1024;

} // namespace

Output::~Output() {
    {
        const std::lock_guard guard(lock_);
        ending_ = true;
    }
    changed_.notify_all();
    if (writer_.joinable())
        writer_.join();
}

void Output::emit(const AgentMessage& message) {
    auto line = encodeMessage(message);
    if (!line)
        return;
    {
        const std::lock_guard guard(lock_);
        queue_.push_back(std::move(*line));
        ++queued_;
        static_cast<void>(startThread());
    }
    changed_.notify_all();
}

bool Output::startWriting() {
    const std::lock_guard guard(lock_);
    return queue_.empty() || startThread();
}

std::uint64_t Output::queuedLines() const {
    const std::lock_guard guard(lock_);
    return queued_;
}

bool Output::hasWritten(std::uint64_t lines) const {
    const std::lock_guard guard(lock_);
    return queued_ - queue_.size() >= lines;
}

bool Output::waitUntilWritten(std::chrono::milliseconds longestWait) {
    static_cast<void>(startWriting());
    std::unique_lock guard(lock_);
    return changed_.wait_for(guard, longestWait, [this] { return queue_.empty(); });
}

std::uint64_t Output::progress() const {
    const std::lock_guard guard(lock_);
    return progress_;
}

/// The lock must be held.
bool Output::startThread() {
    if (writer_.joinable())
        return true;
    try {
        writer_ = std::thread([this] { writeQueue(); });
        return true;
    } catch (const std::exception&) {
        return false; // the lines wait for the next attempt
    }
}

void Output::writeQueue() {
    std::unique_lock guard(lock_);
    for (;;) {
        changed_.wait(guard, [this] { return ending_ || !queue_.empty(); });
        if (queue_.empty())
            return;
        const std::string& line = queue_.front(); // stays where it is while others are added behind it
        guard.unlock();
        write(line);
        guard.lock();
        queue_.pop_front();
        changed_.notify_all();
    }
}

void Output::write(std::string_view line) {
    if (line.size() >= pieceBytes)
        enlargePipe(descriptor_);
    while (!line.empty()) {
        const std::string_view piece = line.substr(0, pieceBytes);
        if (!writeAll(descriptor_, piece)) {
            if (errno == EPIPE)
                endByBrokenPipeSignal(); // without a reader there is no parent left to serve
            return;
        }
        line.remove_prefix(piece.size());
        const std::lock_guard guard(lock_);
        ++progress_;
    }
}

} // namespace tavel
