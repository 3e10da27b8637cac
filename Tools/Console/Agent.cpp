#include "Console/Agent.h"

#include "TavelClipboardAgent/main/Protocol/Encoder.h"
#include "TavelClipboardAgent/main/Protocol/MessageDecoder.h"

#include <unistd.h>

#include <csignal>
#include <utility>
#include <vector>

namespace tavel {

namespace {

/// How long the agent has to end after each signal.
constexpr std::chrono::milliseconds signalTimeout{1000};

std::vector<std::string> launchArguments(const std::filesystem::path& executable,
                                         const std::optional<std::string>& pasteboard) {
    std::vector<std::string> arguments{executable.string(), "--parent-pid", std::to_string(getpid())};
    if (pasteboard) {
        arguments.emplace_back("--test-pasteboard");
        arguments.push_back(*pasteboard);
    }
    return arguments;
}

} // namespace

Agent::Agent(const std::filesystem::path& executable, const std::optional<std::string>& pasteboard,
             Handlers handlers)
    : handlers_(std::move(handlers)),
      process_(launchArguments(executable, pasteboard),
               {[this](std::string_view bytes) {
                    lines_.append(bytes, [this](std::string_view line) { receive(line); });
                },
                [this](int status) { noteEnd(status); }}) {}

std::uint64_t Agent::send(std::string name, ClipboardCommand command) {
    const std::uint64_t requestID = ++lastRequestID_;
    std::visit([requestID](auto& one) { one.requestID = requestID; }, command);
    std::string line = encodeCommand(command).value();
    outstanding_.emplace(requestID, std::move(name));
    handlers_.sent(std::string_view(line).substr(0, line.size() - 1));
    process_.send(std::move(line));
    return requestID;
}

void Agent::sendLine(std::string_view line) {
    if (auto head = decodeCommandHead(line))
        outstanding_.emplace(head->requestID, std::move(head->name));
    handlers_.sent(line);
    process_.send(std::string(line) + '\n');
}

bool Agent::end(std::chrono::milliseconds timeout) {
    const auto hasEnded = [this] { return !isRunning(); };
    process_.closeInput();
    if (runUntil(hasEnded, timeout))
        return true;
    process_.sendSignal(SIGTERM);
    if (!runUntil(hasEnded, signalTimeout)) {
        process_.sendSignal(SIGKILL);
        runUntil(hasEnded, signalTimeout);
    }
    return false;
}

void Agent::receive(std::string_view line) {
    handlers_.received(line);
    const auto message = decodeMessage(line);
    if (!message) {
        handlers_.unintelligible(line);
        return;
    }
    std::string requestName;
    if (const auto* const reply = std::get_if<Reply>(&*message)) {
        const auto found = outstanding_.lower_bound(reply->requestID);
        if (found != outstanding_.end() && found->first == reply->requestID) {
            requestName = std::move(found->second);
            outstanding_.erase(found);
        }
    }
    handlers_.said(*message, requestName);
}

void Agent::noteEnd(int status) {
    lines_.finish([this](std::string_view line) { receive(line); });
    handlers_.ended(status);
}

} // namespace tavel
