#pragma once

#include "tavel/client/Process.h"

#include <pthread.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

/// The agent's lines. Applications need nothing of this file.
namespace tavel::client::detail {

using Clock = std::chrono::steady_clock;

/// How long an agent has to end after each signal, and after it has closed its output.
inline constexpr std::chrono::seconds signalTimeout{1};
inline constexpr std::chrono::seconds silenceTimeout{5};

/// Assembles lines from pieces of any length.
class LineSplitter {
public:
    explicit LineSplitter(std::size_t longestLine) : longestLine_(longestLine) {}

    /// Passes each line that the bytes complete to the function, without its line feed, until the function
    /// returns false. Returns false then, and if a line is longer than allowed.
    template <typename Function>
    bool append(std::string_view bytes, const Function& handleLine) {
        for (;;) {
            const std::size_t feed = bytes.find('\n');
            if (rest_.size() + std::min(feed, bytes.size()) > longestLine_)
                return false;
            if (feed == std::string_view::npos)
                break;
            if (rest_.empty()) {
                if (!handleLine(bytes.substr(0, feed)))
                    return false;
            } else {
                const std::string line = std::exchange(rest_, std::string()).append(bytes.substr(0, feed));
                if (!handleLine(std::string_view(line)))
                    return false;
            }
            bytes.remove_prefix(feed + 1);
        }
        rest_.append(bytes);
        return true;
    }

    /// What has no line feed yet.
    const std::string& rest() const { return rest_; }

private:
    std::size_t longestLine_;
    std::string rest_;
};

/// Blocks the signals in this thread as long as it exists. A thread that starts meanwhile keeps them blocked:
/// it handles no signal of the application, and a write to an agent that is gone only fails. Signals of a
/// thread's own faults are not blocked, because the system then ends the process without its handlers.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t blocked;
        sigfillset(&blocked);
        for (const int fault : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP})
            sigdelset(&blocked, fault);
        pthread_sigmask(SIG_SETMASK, &blocked, &former_);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t former_{};
};

/// One run of the agent, and the thread that exchanges lines with it. The thread lives until the agent has
/// ended. Other threads may call every function.
class Connection {
public:
    /// Called on the thread. None may call `end` or destroy the connection.
    struct Handlers {
        /// A line without its line feed. False if it is none of an agent, which is killed then.
        std::function<bool(std::string_view line)> received;
        /// Called at each turn: whether lines may be received now, and whether the agent is about to end.
        /// Call `wake` when the answer changes to yes.
        std::function<bool(bool ends)> mayRead;
        /// Called at each turn: does what is due, and returns when to be called at the latest.
        std::function<Clock::time_point(Clock::time_point now)> tick;
        /// The last call. `rest` is what the agent wrote behind its last line.
        std::function<void(const End& end, std::string_view rest)> ended;
    };

    /// Starts the agent. Throws as Process does, and std::system_error if there is no thread.
    Connection(const std::vector<std::string>& arguments,
               const std::optional<std::vector<std::string>>& environment, std::size_t longestLine,
               Handlers handlers)
        : handlers_(std::move(handlers)), process_(arguments, environment),
          processIdentifier_(process_.identifier()), lines_(longestLine) {
        const BlockedSignals blocked;
        thread_ = std::thread([this] { run(); });
    }

    ~Connection() { end(std::chrono::milliseconds(0)); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    pid_t processIdentifier() const { return processIdentifier_; }

    /// Queues the line and its line feed. Never blocks. False if then more than so many bytes would wait.
    bool send(std::string line, std::size_t longestQueue) {
        {
            const std::lock_guard lock(mutex_);
            if (waitingBytes_ + line.size() + 1 > longestQueue)
                return false;
            line += '\n';
            waitingBytes_ += line.size();
            waiting_.push_back(std::move(line));
        }
        wakeUp_.wake();
        return true;
    }

    void wake() const { wakeUp_.wake(); }

    /// Closes the agent's input behind the lines that wait, and waits for the agent's end. Signals an agent
    /// that takes longer than the time-out, and returns false then.
    bool end(std::chrono::milliseconds timeout) {
        {
            const std::lock_guard lock(mutex_);
            endRequested_ = Clock::now() + timeout;
        }
        wakeUp_.wake();
        const std::lock_guard lock(joining_);
        if (thread_.joinable())
            thread_.join();
        return !wasSignalled_;
    }

private:
    /// What is done to an agent that shall end, in this order.
    enum class Pressure { none, inputClosed, terminated, killed, abandoned };

    void run() {
        while (!process_.noteEnd() && pressure_ != Pressure::abandoned)
            turn();
        if (process_.output().isOpen() && problem_.empty())
            readRest();
        process_.input().close();
        process_.output().close();
        handlers_.ended(endOfProcess(), problem_.empty() ? std::string_view(lines_.rest()) : "");
    }

    End endOfProcess() {
        const std::lock_guard lock(mutex_);
        return {process_.waitStatus(), endRequested_.has_value(), problem_};
    }

    void turn() {
        const Clock::time_point due = handlers_.tick(Clock::now());
        takeLines();
        writeLines();
        press(Clock::now());
        const bool reads = process_.output().isOpen() && handlers_.mayRead(pressure_ != Pressure::none);
        std::array<pollfd, 4> watched{pollfd{wakeUp_.descriptor(), POLLIN, 0},
                                      pollfd{process_.endDescriptor().number(), POLLIN, 0},
                                      pollfd{writing_.empty() ? -1 : process_.input().number(), POLLOUT, 0},
                                      pollfd{reads ? process_.output().number() : -1, POLLIN, 0}};
        poll(watched.data(), watched.size(), timeUntil(std::min(due, pressureDue_)));
        wakeUp_.clear();
        if (watched[3].revents != 0)
            readOnce();
    }

    /// Milliseconds for poll. Where the end of a process cannot be watched, it is looked for instead.
    int timeUntil(Clock::time_point due) const {
        const auto longest = std::chrono::milliseconds(process_.endDescriptor().isOpen() ? 60'000 : 100);
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now());
        return static_cast<int>(std::clamp(wait, std::chrono::milliseconds(0), longest).count());
    }

    void takeLines() {
        const std::lock_guard lock(mutex_);
        for (std::string& line : waiting_)
            writing_.push_back(std::move(line));
        waiting_.clear();
        if (endRequested_ && pressure_ == Pressure::none) {
            pressure_ = Pressure::inputClosed;
            pressureDue_ = *endRequested_;
        } else if (endRequested_ && pressure_ == Pressure::inputClosed) {
            pressureDue_ = std::min(pressureDue_, *endRequested_);
        }
    }

    void writeLines() {
        while (!writing_.empty() && process_.input().isOpen()) {
            const std::string_view rest = std::string_view(writing_.front()).substr(written_);
            const ssize_t count = write(process_.input().number(), rest.data(), rest.size());
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
                return;
            if (count < 0) {
                process_.input().close(); // the agent reads no more; its end is noticed elsewhere
                break;
            }
            written_ += static_cast<std::size_t>(count);
            if (written_ == writing_.front().size())
                dropFirstLine();
        }
        while (!writing_.empty())
            dropFirstLine();
        if (pressure_ != Pressure::none)
            process_.input().close();
    }

    void dropFirstLine() {
        const std::lock_guard lock(mutex_);
        waitingBytes_ -= writing_.front().size();
        writing_.pop_front();
        written_ = 0;
    }

    void readOnce() {
        const ssize_t count = read(process_.output().number(), buffer_.data(), buffer_.size());
        if (count > 0)
            take({buffer_.data(), static_cast<std::size_t>(count)});
        else if (count == 0 || (errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK))
            noteSilence();
    }

    /// The agent has ended, but another process may still hold the pipe, and even write into it. So this
    /// reads no more than what may have been in the pipe.
    void readRest() {
        std::size_t left = std::size_t{1024} * 1024;
        while (problem_.empty()) {
            const std::size_t most = std::min(left, buffer_.size());
            const ssize_t count = read(process_.output().number(), buffer_.data(), most);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return;
            take({buffer_.data(), static_cast<std::size_t>(count)});
            left -= static_cast<std::size_t>(count);
        }
    }

    void take(std::string_view bytes) {
        bool isMessage = true;
        const bool taken =
            lines_.append(bytes, [&](std::string_view line) { return isMessage = handlers_.received(line); });
        if (taken)
            return;
        problem_ = isMessage ? "the program wrote too long a line" : "the program wrote what no agent writes";
        process_.output().close();
        process_.signal(SIGKILL);
        pressure_ = Pressure::killed;
        pressureDue_ = Clock::now() + signalTimeout;
    }

    void noteSilence() {
        process_.output().close();
        if (pressure_ != Pressure::none)
            return;
        pressure_ = Pressure::inputClosed;
        pressureDue_ = Clock::now() + silenceTimeout;
    }

    void press(Clock::time_point now) {
        if (pressure_ == Pressure::none || now < pressureDue_)
            return;
        pressureDue_ = now + signalTimeout;
        wasSignalled_ = true;
        if (pressure_ == Pressure::inputClosed) {
            pressure_ = Pressure::terminated;
            process_.signal(SIGTERM);
        } else if (pressure_ == Pressure::terminated) {
            pressure_ = Pressure::killed;
            process_.signal(SIGKILL);
        } else {
            pressure_ = Pressure::abandoned; // not even the system can end it
        }
    }

    Handlers handlers_;
    WakeUp wakeUp_;
    std::mutex mutex_; // of the next four
    std::deque<std::string> waiting_;
    std::size_t waitingBytes_ = 0; // of both queues
    std::optional<Clock::time_point> endRequested_;

    // Used by the thread alone. wasSignalled_ is read after it.
    Process process_;
    const pid_t processIdentifier_;
    LineSplitter lines_;
    std::array<char, std::size_t{64} * 1024> buffer_{};
    std::deque<std::string> writing_;
    std::size_t written_ = 0; // bytes of its first line
    Pressure pressure_ = Pressure::none;
    Clock::time_point pressureDue_ = Clock::time_point::max();
    std::string problem_;
    bool wasSignalled_ = false;

    std::mutex joining_; // of the next one
    std::thread thread_;
};

} // namespace tavel::client::detail
