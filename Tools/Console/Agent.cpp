#include "Console/Agent.h"

#include <simdjson.h>
#include <unistd.h>

#include <csignal>
#include <utility>
#include <vector>

namespace tavel {

namespace {

/// How long an agent that was told to end by a signal gets before it is killed.
constexpr std::chrono::milliseconds afterSignal{1000};

std::vector<std::string> launchArguments(const std::filesystem::path& executable,
                                         const std::optional<std::string>& pasteboard) {
    std::vector<std::string> arguments{executable.string(), "--parent-pid", std::to_string(getpid())};
    if (pasteboard) {
        arguments.emplace_back("--test-pasteboard");
        arguments.push_back(*pasteboard);
    }
    return arguments;
}

struct Expectation {
    std::uint64_t requestID;
    std::string name;
};

/// The reply that a line asks for, if it is one that will be answered.
std::optional<Expectation> expectationFrom(std::string_view line) {
    simdjson::dom::parser parser;
    simdjson::dom::object fields;
    std::string_view name;
    std::uint64_t requestID = 0;
    if (parser.parse(line.data(), line.size()).get(fields) != simdjson::SUCCESS ||
        fields.at_key("command").get(name) != simdjson::SUCCESS ||
        fields.at_key("request_id").get(requestID) != simdjson::SUCCESS)
        return std::nullopt;
    return Expectation{requestID, std::string(name)};
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

std::uint64_t Agent::send(Request request) {
    const std::uint64_t requestID = ++lastRequestID_;
    request.fields.add("request_id", requestID);
    std::string line = request.fields.takeLine();
    outstanding_.emplace(requestID, std::move(request.name));
    handlers_.sent(std::string_view(line).substr(0, line.size() - 1));
    process_.send(std::move(line));
    return requestID;
}

void Agent::sendLine(std::string_view line) {
    if (auto expectation = expectationFrom(line))
        outstanding_.emplace(expectation->requestID, std::move(expectation->name));
    handlers_.sent(line);
    process_.send(std::string(line) + '\n');
}

bool Agent::end(std::chrono::milliseconds patience) {
    const auto hasEnded = [this] { return !isRunning(); };
    process_.closeInput();
    if (runUntil(hasEnded, patience))
        return true;
    process_.sendSignal(SIGTERM);
    if (!runUntil(hasEnded, afterSignal)) {
        process_.sendSignal(SIGKILL);
        runUntil(hasEnded, afterSignal);
    }
    return false;
}

void Agent::receive(std::string_view line) {
    handlers_.received(line);
    const AgentMessage message = decodeAgentMessage(line);
    std::string requestName;
    if (const auto* const reply = std::get_if<message::Reply>(&message)) {
        const auto found = outstanding_.lower_bound(reply->requestID);
        if (found != outstanding_.end() && found->first == reply->requestID) {
            requestName = std::move(found->second);
            outstanding_.erase(found);
        }
    }
    handlers_.said(message, requestName);
}

void Agent::noteEnd(int status) {
    lines_.finish([this](std::string_view line) { receive(line); });
    handlers_.ended(status);
}

} // namespace tavel
