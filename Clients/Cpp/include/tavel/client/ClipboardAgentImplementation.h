#pragma once

#include "tavel/ClipboardAgent.h"

/// The functions of ClipboardAgent. Their names end in Locked where the caller holds the mutex. Applications
/// include ClipboardAgent.h.
namespace tavel::client {

inline std::vector<std::string> ClipboardAgent::launchArguments() const {
    std::vector<std::string> arguments{options_.program.string()};
    if (options_.watchParent) {
        arguments.emplace_back("--parent-pid");
        arguments.push_back(std::to_string(getpid()));
    }
    if (options_.testPasteboard) {
        arguments.emplace_back("--test-pasteboard");
        arguments.push_back(*options_.testPasteboard);
    }
    arguments.insert(arguments.end(), options_.arguments.begin(), options_.arguments.end());
    return arguments;
}

inline std::shared_ptr<detail::Connection> ClipboardAgent::connect() {
    return std::make_shared<detail::Connection>(
        launchArguments(), options_.environment, options_.longestLine,
        detail::Connection::Handlers{[this](std::string_view line) { return receive(line); },
                                     [this](bool ends) { return mayRead(ends); },
                                     [this](Clock::time_point now) { return failOverdue(now); },
                                     [this](const End& end, std::string_view rest) { noteEnd(end, rest); }});
}

inline void ClipboardAgent::startAlone() {
    {
        const std::lock_guard lock(mutex_);
        if (isRunning_ || isDestroyed_)
            return;
    }
    endAlone({}); // takes the thread of a run that has ended by itself
    if (options_.calls == Options::Calls::onOwnThread && !caller_.joinable())
        caller_ = std::thread([this] { callAll(); });
    const std::lock_guard lock(mutex_);
    quits_ = false;
    connection_ = connect(); // whose thread waits for the mutex before it tells anything
    processIdentifier_ = connection_->processIdentifier();
    isRunning_ = true;
}

inline bool ClipboardAgent::endAlone(std::chrono::milliseconds timeout) {
    std::shared_ptr<detail::Connection> connection;
    {
        const std::lock_guard lock(mutex_);
        isRunning_ = false;
        connection = connection_;
    }
    if (connection == nullptr)
        return true;
    const bool endedByItself = connection->end(timeout);
    const std::lock_guard lock(mutex_);
    connection_ = nullptr;
    return endedByItself;
}

inline void ClipboardAgent::send(const Command& command, Pending pending) {
    std::uint64_t requestId = 0;
    {
        const std::lock_guard lock(mutex_);
        requestId = ++lastRequestId_;
    }
    std::string line = detail::encodeCommand(command, requestId);
    const std::lock_guard lock(mutex_);
    if (!isRunning_) {
        fail(std::move(pending), std::make_exception_ptr(AgentEnded("the agent is not running")));
    } else if (!sendLocked(std::move(line))) {
        fail(std::move(pending), std::make_exception_ptr(AgentBusy("the agent does not read")));
    } else {
        quits_ = quits_ || std::holds_alternative<command::Quit>(command);
        pending.due = Clock::now() + options_.replyTimeout;
        pending_.emplace(requestId, std::move(pending));
    }
}

inline bool ClipboardAgent::sendLocked(std::string line) {
    std::string copy;
    if (handlers_.sent)
        copy = line;
    if (!isRunning_ || !connection_->send(std::move(line), options_.longestQueue))
        return false;
    if (handlers_.sent)
        call([this, sent = std::move(copy)] { handlers_.sent(sent); });
    return true;
}

/// False if the line is none of an agent.
inline bool ClipboardAgent::receive(std::string_view line) {
    auto message = detail::MessageDecoder::decode(line);
    const std::lock_guard lock(mutex_);
    if (handlers_.received)
        call([this, received = std::string(line)] { handlers_.received(received); }, line.size() + 1);
    if (!message) {
        if (handlers_.unintelligible)
            call([this, received = std::string(line)] { handlers_.unintelligible(received); },
                 line.size() + 1);
        return static_cast<bool>(handlers_.unintelligible);
    }
    if (auto* const event = std::get_if<Event>(&*message)) {
        if (handlers_.event)
            call([this, received = std::move(*event)] { handlers_.event(received); }, line.size() + 1);
        return true;
    }
    const auto& reply = std::get<detail::Reply>(*message);
    auto node = pending_.extract(reply.requestId);
    if (node.empty())
        return true; // too late, or to a line of the application
    if (reply.ok)
        settle(std::move(node.mapped()), [&](auto& promise) { promise.set_value(reply.sequence); });
    else
        fail(std::move(node.mapped()), std::make_exception_ptr(CommandRefused(reply.reason, reply.sequence)));
    return true;
}

inline bool ClipboardAgent::mayRead(bool ends) const {
    const std::lock_guard lock(mutex_);
    return received_ < mostReceived || ((ends || !pending_.empty()) && receivedBytes_ < mostReceivedBytes);
}

inline ClipboardAgent::Clock::time_point ClipboardAgent::failOverdue(Clock::time_point now) {
    const std::lock_guard lock(mutex_);
    while (!pending_.empty() && pending_.begin()->second.due <= now)
        fail(std::move(pending_.extract(pending_.begin()).mapped()),
             std::make_exception_ptr(AgentTimeout("the agent does not reply")));
    return pending_.empty() ? Clock::time_point::max() : pending_.begin()->second.due;
}

inline void ClipboardAgent::noteEnd(const End& end, std::string_view rest) {
    const std::lock_guard lock(mutex_);
    isRunning_ = false;
    const auto error = end.protocolProblem.empty()
                           ? std::make_exception_ptr(AgentEnded("the agent ended: " + end.description()))
                           : std::make_exception_ptr(ProtocolError(end.protocolProblem));
    for (auto& [requestId, pending] : std::exchange(pending_, {}))
        fail(std::move(pending), error);
    if (!rest.empty() && handlers_.received)
        call([this, received = std::string(rest)] { handlers_.received(received); });
    if (!rest.empty() && handlers_.unintelligible)
        call([this, received = std::string(rest)] { handlers_.unintelligible(received); });
    if (handlers_.ended)
        call([this, told = End{end.waitStatus, end.requested || quits_, end.protocolProblem}] {
            handlers_.ended(told);
        });
}

template <typename Settle>
void ClipboardAgent::settle(Pending pending, const Settle& settlePromise) {
    settlePromise(pending.promise);
    if (!pending.completion)
        return;
    // A function that can be called can be copied, which a promise cannot.
    auto shared = std::make_shared<Pending>(std::move(pending));
    call([shared] { shared->completion(shared->promise.get_future()); });
}

inline void ClipboardAgent::fail(Pending pending, const std::exception_ptr& error) {
    settle(std::move(pending), [&](auto& promise) { promise.set_exception(error); });
}

inline void ClipboardAgent::call(std::function<void()> function, std::size_t receivedBytes) {
    calls_.push_back({std::move(function), receivedBytes});
    received_ += receivedBytes > 0 ? 1 : 0;
    receivedBytes_ += receivedBytes;
    if (options_.calls == Options::Calls::inProcess)
        callsWait_.wake();
    else
        called_.notify_one();
}

/// Gives the mutex up while the function runs.
inline void ClipboardAgent::callFirst(std::unique_lock<std::mutex>& lock) {
    const Call first = std::move(calls_.front());
    calls_.pop_front();
    if (first.receivedBytes > 0) {
        const bool wasFull = received_ >= mostReceived;
        --received_;
        receivedBytes_ -= first.receivedBytes;
        if (wasFull && connection_ != nullptr)
            connection_->wake();
    }
    lock.unlock();
    first.function();
    lock.lock();
}

inline void ClipboardAgent::callAll() {
    std::unique_lock lock(mutex_);
    while (!isDestroyed_) {
        if (calls_.empty())
            called_.wait(lock);
        else
            callFirst(lock);
    }
}

} // namespace tavel::client
