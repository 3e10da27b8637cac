#include "Doctor/AgentTrial.h"

#include "Console/ChildProcess.h"
#include "Support/Error.h"

#include <utility>
#include <variant>

namespace tavel {

const std::string AgentTrial::pasteboardName = "tavel-console-doctor";

AgentTrial::AgentTrial(const std::filesystem::path& executable, std::chrono::milliseconds timeout)
    : timeout_(timeout), agent_(executable, pasteboardName, handlers()) {}

Agent::Handlers AgentTrial::handlers() {
    Agent::Handlers handlers;
    handlers.sent = [](std::string_view) {};
    handlers.received = [](std::string_view) {};
    handlers.said = [this](const AgentMessage& message, std::string_view) {
        if (const auto* const reply = std::get_if<Reply>(&message))
            reply_ = *reply;
    };
    handlers.unintelligible = [this](std::string_view) { isUnintelligible_ = true; };
    handlers.ended = [this](int status) { end_ = status; };
    return handlers;
}

Reply AgentTrial::ask(ClipboardCommand command) {
    reply_.reset();
    const std::uint64_t number = agent_.send("trial", std::move(command));
    const auto isAnswered = [&] { return reply_ && reply_->requestID == number; };
    runUntil([&] { return isAnswered() || isUnintelligible_ || end_; }, timeout_);
    if (isAnswered())
        return *reply_;
    if (isUnintelligible_)
        throw Error("Tavel", 1, "it says something that is no message of the protocol");
    if (end_)
        throw Error("Tavel", 1, "it ended unexpectedly: " + describeEnd(*end_));
    throw Error("Tavel", 1, "it does not answer within " + std::to_string(timeout_.count() / 1000) + " s");
}

void AgentTrial::end() {
    if (!agent_.end(timeout_))
        throw Error("Tavel", 1, "it does not end by itself when its input ends");
    if (end_ && *end_ != 0)
        throw Error("Tavel", 1, "it ended with " + describeEnd(*end_));
}

} // namespace tavel
