#include "Console/Agent.h"

#include "Support/Error.h"
#include "TavelClipboardAgent/main/Protocol/Encoder.h"
#include "TavelClipboardAgent/main/Protocol/MessageDecoder.h"

#include <csignal>
#include <limits>
#include <utility>

namespace tavel {

namespace {

client::Options launchOptions(const std::filesystem::path& executable,
                              const std::optional<std::string>& pasteboard) {
    client::Options options;
    options.program = executable;
    options.testPasteboard = pasteboard;
    options.calls = client::Options::Calls::inProcess;
    options.longestQueue = std::numeric_limits<std::size_t>::max(); // the user may try any line
    return options;
}

} // namespace

Agent::Agent(const std::filesystem::path& executable, const std::optional<std::string>& pasteboard,
             Handlers handlers)
    : handlers_(std::move(handlers)),
      client_(launchOptions(executable, pasteboard),
              {.ended =
                   [this](const client::End& end) {
                       hasEnded_ = true;
                       handlers_.ended(
                           end.waitStatus.value_or(SIGKILL)); // unknown where even that did not end it
                   },
               .received = [this](std::string_view line) { receive(line); },
               .unintelligible = [](std::string_view) {}}) { // receive tells of them
    try {
        client_.start();
    } catch (const client::AgentNotFound& error) {
        throw Error("POSIX", 0, std::string("Cannot start ") + error.what());
    }
    clientWatch_ = Watch::readable(client_.descriptor(), [this] { client_.process(); });
}

std::uint64_t Agent::send(std::string name, ClipboardCommand command) {
    const std::uint64_t requestID = ++lastRequestID_;
    std::visit([requestID](auto& one) { one.requestID = requestID; }, command);
    std::string line = encodeCommand(command).value();
    outstanding_.emplace(requestID, std::move(name));
    line.pop_back(); // the line feed
    handlers_.sent(line);
    client_.sendLine(line);
    return requestID;
}

void Agent::sendLine(std::string_view line) {
    if (auto head = decodeCommandHead(line))
        outstanding_.emplace(head->requestID, std::move(head->name));
    handlers_.sent(line);
    client_.sendLine(line);
}

bool Agent::end(std::chrono::milliseconds timeout) {
    const bool endedByItself = client_.end(timeout);
    client_.process();
    return endedByItself;
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

} // namespace tavel
