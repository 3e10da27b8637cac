#pragma once

#include "tavel/client/Connection.h"
#include "tavel/client/Messages.h"
#include "tavel/client/Protocol.h"

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace tavel::client {

/// How to run the agent.
struct Options {
    /// Where the functions of Handlers are called.
    enum class Calls {
        onOwnThread, // on one thread of the client
        inProcess    // in ClipboardAgent::process, which the application calls
    };

    /// The path of the agent's program.
    std::filesystem::path program{};
    /// Whether the agent shall end when this process ends, however that happens.
    bool watchParent = true;
    /// The pasteboard of this name, for tests; the user's if there is none.
    std::optional<std::string> testPasteboard{};
    /// Further arguments.
    std::vector<std::string> arguments{};
    /// As "NAME=value"; that of this process if there is none.
    std::optional<std::vector<std::string>> environment{};
    Calls calls = Calls::onOwnThread;
    /// A command without a reply fails after this time.
    std::chrono::milliseconds replyTimeout{30'000};
    /// In bytes. The program is killed if it writes a longer line; the agent's are far shorter.
    std::size_t longestLine = std::size_t{64} * 1024 * 1024;
    /// In bytes. So much may wait for an agent that does not read; a further command fails.
    std::size_t longestQueue = std::size_t{256} * 1024 * 1024;
};

/// The application's functions, of which each may be missing. They are called one after another, and must not
/// throw. They may call every function of the client and wait for replies, but not destroy the client.
struct Handlers {
    std::function<void(const Event& event)> event{};
    /// The agent has ended. Everything else about that run was called before.
    std::function<void(const End& end)> ended{};
    /// Each line in either direction, verbatim, without its line feed.
    std::function<void(std::string_view line)> sent{};
    std::function<void(std::string_view line)> received{};
    /// A line that no agent writes, after `received`. If this function is missing, such a line kills the
    /// program.
    std::function<void(std::string_view line)> unintelligible{};
};

/// The clipboard agent, for a parent application.
///
/// Any thread may call every function. None blocks but `start`, `end`, `restart` and the destructor, and
/// those have limits. A command returns a future of the pasteboard's change count; its get() throws
/// CommandRefused, AgentTimeout, AgentBusy, AgentEnded or ProtocolError instead. Where a text or path is not
/// UTF-8, the command itself throws std::invalid_argument.
///
/// The application must not wait for the agent's process itself, as with waitpid(-1): the exit status would
/// be lost.
class ClipboardAgent {
public:
    /// The change count after a command, or the error of the class's comment.
    using Count = std::future<std::uint64_t>;
    /// Called like the functions of Handlers, with a future that is ready.
    using Completion = std::function<void(Count count)>;

    /// Does not start the agent.
    explicit ClipboardAgent(Options options, Handlers handlers = {})
        : options_(std::move(options)), handlers_(std::move(handlers)) {}

    ClipboardAgent(std::filesystem::path program, std::function<void(const Event& event)> event)
        : ClipboardAgent(Options{.program = std::move(program)}, Handlers{.event = std::move(event)}) {}

    /// Ends the agent as end() does. Then waits for the function that is running; those that wait to be
    /// called are not called any more.
    ~ClipboardAgent() {
        {
            const std::lock_guard lock(mutex_);
            isDestroyed_ = true;
        }
        called_.notify_all();
        end();
        if (caller_.joinable())
            caller_.join();
    }
    ClipboardAgent(const ClipboardAgent&) = delete;
    ClipboardAgent& operator=(const ClipboardAgent&) = delete;

    /// Does nothing if the agent is running, and while the object is destroyed. Throws AgentNotFound, and
    /// std::system_error if the system refuses threads or descriptors.
    void start() {
        const std::lock_guard life(life_);
        startAlone();
    }

    /// Closes the agent's input behind the commands that wait, and waits for the agent's end: it carries them
    /// out first. Signals an agent that takes longer than the time-out; then it takes three seconds more at
    /// most. Returns false if it had to signal.
    bool end(std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
        const std::lock_guard life(life_);
        return endAlone(timeout);
    }

    /// end(timeout), then start().
    void restart(std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
        const std::lock_guard life(life_);
        endAlone(timeout);
        startAlone();
    }

    bool isRunning() const {
        const std::lock_guard lock(mutex_);
        return isRunning_;
    }

    /// Of the current or last run; 0 before the first.
    pid_t processIdentifier() const {
        const std::lock_guard lock(mutex_);
        return processIdentifier_;
    }

    Count ping() { return request(command::Ping{}); }
    Count writeText(std::string text, std::string marker = {}) {
        return request(command::WriteText{std::move(text), std::move(marker)});
    }
    Count writeFiles(std::vector<std::filesystem::path> paths, std::string marker = {},
                     std::optional<std::uint64_t> expectedSequence = {}) {
        return request(command::WriteFiles{std::move(paths), std::move(marker), expectedSequence});
    }
    Count writeImage(std::filesystem::path path, std::string marker = {},
                     std::optional<std::uint64_t> expectedSequence = {}) {
        return request(command::WriteImage{std::move(path), std::move(marker), expectedSequence});
    }
    Count writeFormats(std::vector<std::filesystem::path> paths, std::string marker = {},
                       std::optional<std::uint64_t> expectedSequence = {}) {
        return request(command::WriteFormats{std::move(paths), std::move(marker), expectedSequence});
    }
    Count writeImageData(std::string data) { return request(command::WriteImageData{std::move(data)}); }
    Count discardPending() { return request(command::DiscardPending{}); }
    Count configureFilePrompt(bool renamePrompt) {
        return request(command::ConfigureFilePrompt{renamePrompt});
    }
    Count quit() { return request(command::Quit{}); }

    Count request(const Command& command) {
        std::promise<std::uint64_t> promise;
        Count count = promise.get_future();
        send(command, {std::move(promise), nullptr, {}});
        return count;
    }

    /// Calls the function instead of returning a future.
    void request(const Command& command, Completion completion) {
        send(command, {{}, std::move(completion), {}});
    }

    /// Sends a line as it is, without a line feed in it. Its reply is seen by Handlers::received alone, and
    /// its number should be none that the client uses: those count from 1. Returns false if the agent is not
    /// running, or too much waits for it.
    bool sendLine(std::string_view line) {
        if (line.find('\n') != std::string_view::npos)
            throw std::invalid_argument("a line feed in a line");
        const std::lock_guard lock(mutex_);
        return sendLocked(std::string(line));
    }

    /// For Calls::inProcess: readable when process() has something to do. The same for the object's life.
    int descriptor() const { return callsWait_.descriptor(); }

    /// For Calls::inProcess: calls the functions that wait to be called. Does not block. One thread may call
    /// it at a time.
    void process() {
        std::unique_lock lock(mutex_);
        callsWait_.clear();
        for (std::size_t left = calls_.size(); left > 0 && !calls_.empty(); --left)
            callFirst(lock);
        if (!calls_.empty())
            callsWait_.wake();
    }

private:
    using Clock = detail::Clock;

    /// A command without a reply. Either the promise counts or the completion.
    struct Pending {
        std::promise<std::uint64_t> promise;
        Completion completion;
        Clock::time_point due;
    };

    /// A function that waits to be called.
    struct Call {
        std::function<void()> function;
        std::size_t receivedBytes; // of the line that it is about, with its line feed; 0 if there is none
    };

    /// The agent's lines stay in its pipe while so many wait here; while replies are awaited or the agent
    /// ends, only if the lines have so many bytes.
    static constexpr std::size_t mostReceived = 64;
    static constexpr std::size_t mostReceivedBytes = std::size_t{64} * 1024 * 1024;

    void startAlone();
    bool endAlone(std::chrono::milliseconds timeout);
    std::vector<std::string> launchArguments() const;
    std::shared_ptr<detail::Connection> connect();

    void send(const Command& command, Pending pending);
    bool sendLocked(std::string line);

    bool receive(std::string_view line);
    bool mayRead(bool ends) const;
    Clock::time_point failOverdue(Clock::time_point now);
    void noteEnd(const End& end, std::string_view rest);
    template <typename Settle>
    void settle(Pending pending, const Settle& settlePromise);
    void fail(Pending pending, const std::exception_ptr& error);

    void call(std::function<void()> function, std::size_t receivedBytes = 0);
    void callFirst(std::unique_lock<std::mutex>& lock);
    void callAll();

    const Options options_;
    const Handlers handlers_;
    detail::WakeUp callsWait_;

    std::mutex life_; // of starts and ends
    std::thread caller_;

    mutable std::mutex mutex_; // of everything below
    std::condition_variable called_;
    std::shared_ptr<detail::Connection> connection_;
    bool isRunning_ = false;
    bool quits_ = false; // of this run
    bool isDestroyed_ = false;
    pid_t processIdentifier_ = 0;
    std::uint64_t lastRequestId_ = 0;
    std::map<std::uint64_t, Pending> pending_;
    std::deque<Call> calls_;
    std::size_t received_ = 0;      // the calls about received lines
    std::size_t receivedBytes_ = 0; // and the bytes of these lines
};

} // namespace tavel::client

#include "tavel/client/ClipboardAgentImplementation.h"
