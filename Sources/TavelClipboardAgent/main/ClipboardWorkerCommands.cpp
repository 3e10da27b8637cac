#include "Support/Error.h"
#include "TavelClipboardAgent/Messages.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"

namespace tavel {

void ClipboardWorker::handle(ClipboardCommand command) {
    owner_.assertCurrent();
    std::visit(
        [this](auto& one) {
            const Result failure = execute(one);
            respond(one.requestID, !failure, failure.value_or(std::string()));
        },
        command);
    // After the reply, so that the parent reads it before the agent ends.
    if (std::holds_alternative<command::Quit>(command))
        stop();
}

ClipboardWorker::Result ClipboardWorker::execute(const command::ConfigureFilePrompt& command) {
    try {
        filePaste().configure(command.renamePrompt);
        return std::nullopt;
    } catch (const Error& error) {
        return error.description();
    }
}

ClipboardWorker::Result ClipboardWorker::execute(const command::Ping&) {
    return std::nullopt;
}

ClipboardWorker::Result ClipboardWorker::execute(const command::DiscardPending&) {
    previousChangeCount_ = pasteboard_->changeCount();
    ++exportGeneration_;
    return std::nullopt;
}

ClipboardWorker::Result ClipboardWorker::execute(const command::Quit&) {
    return std::nullopt;
}

ClipboardWorker::Result ClipboardWorker::execute(const command::Unknown&) {
    return std::string(messages::unknownCommand);
}

void ClipboardWorker::respond(std::uint64_t requestID, bool ok, std::string_view reason) {
    output_.emit(Reply{requestID, ok, std::string(reason), sequence()});
}

} // namespace tavel
