#include "Support/Error.h"
#include "TavelClipboardAgent/Messages.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"

namespace tavel {

namespace {

// The reason of a command that nothing but a lack of memory or threads has kept from being carried out.

std::string_view refusalOf(const command::ConfigureFilePrompt&) {
    return messages::pasteNotPermitted;
}

std::string_view refusalOf(const command::WriteText&) {
    return messages::textWriteFailed;
}

std::string_view refusalOf(const command::WriteImageData&) {
    return messages::imageWriteFailed;
}

std::string_view refusalOf(const command::WriteFiles& command) {
    if (command.kind == contentKind::formats)
        return messages::formatsWriteFailed;
    return command.kind == contentKind::image ? messages::imageWriteFailed : messages::filesWriteFailed;
}

/// All others need hardly any memory.
template <typename Command>
std::string_view refusalOf(const Command&) {
    return messages::unknownCommand;
}

} // namespace

void ClipboardWorker::handle(ClipboardCommand command) {
    owner_.assertCurrent();
    if (stopping_)
        return; // it was read together with "quit"
    std::visit([this](auto& one) { carryOut(one); }, command);
    // After the reply, so that the parent reads it before the agent ends.
    if (std::holds_alternative<command::Quit>(command))
        stop();
}

template <typename Command>
void ClipboardWorker::carryOut(Command& command) {
    Result failure;
    bool carriedOut = false;
    try {
        failure = execute(command);
        carriedOut = true;
    } catch (const std::exception&) {
        // There is no memory or no thread for this command. The next one may need less.
    }
    const std::string_view reason = failure ? std::string_view(*failure) : std::string_view();
    respond(command.requestID, carriedOut && !failure, carriedOut ? reason : refusalOf(command));
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
    reserve_.insist([&] { passOverContents(); });
    gathering_.reset();
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
    reserve_.insist([&] { output_->emit(Reply{requestID, ok, std::string(reason), sequence()}); });
}

} // namespace tavel
