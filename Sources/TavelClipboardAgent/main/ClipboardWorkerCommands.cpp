#include "Platform/PasteboardTypes.h"
#include "Support/Base64.h"
#include "Support/Error.h"
#include "Support/FileUrl.h"
#include "Support/Files.h"
#include "Support/Utf8.h"
#include "TavelClipboardAgent/Messages.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <algorithm>
#include <utility>

namespace tavel {

namespace {

bool isMarker(const std::optional<std::string>& marker) {
    return marker && marker->size() <= maximumMarkerBytes;
}

/// The text that a command carries, if it is one that may be written.
std::optional<Bytes> textFrom(const command::WriteText& command) {
    if (!command.textBase64 || !isMarker(command.marker))
        return std::nullopt;
    auto text = decodeBase64(command.textBase64->view());
    if (!text || text->size() > maximumTextBytes || !isUtf8(text->view()))
        return std::nullopt;
    return text;
}

bool isExistingAbsolutePath(const std::string& path) {
    return path.starts_with('/') && fileExists(path);
}

} // namespace

void ClipboardWorker::handle(ClipboardCommand command) {
    std::visit(
        [this](const auto& one) {
            const Result failure = execute(one);
            respond(one.requestID, !failure, failure.value_or(std::string()));
        },
        command);
    // The parent reads its reply before it sees the agent go.
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

ClipboardWorker::Result ClipboardWorker::execute(const command::WriteText& command) {
    const auto text = textFrom(command);
    if (!text)
        return std::string(messages::invalidText);
    const bool written = replaceContents([&] {
        return pasteboard_->setString(text->view(), pasteboardType::string) &&
               pasteboard_->setString(*command.marker, markerType);
    });
    return written ? std::nullopt : Result(messages::textWriteFailed);
}

ClipboardWorker::Result ClipboardWorker::execute(const command::WriteImageData&) {
    // No image is valid to an agent without an image codec.
    return std::string(messages::invalidHistoryImage);
}

ClipboardWorker::Result ClipboardWorker::execute(const command::WriteFiles& command) {
    if (hasChangedSince(command.expectedSequence))
        return std::string(messages::changedDuringTransfer);
    if (!isMarker(command.marker) || command.paths.empty() || command.paths.size() > maximumFileCount ||
        !std::ranges::all_of(command.paths, isExistingAbsolutePath))
        return std::string(messages::invalidFiles);
    if (command.kind == "files")
        return writeFileReferences(command);
    return std::string(messages::unknownFormat);
}

ClipboardWorker::Result ClipboardWorker::execute(const command::Unknown&) {
    return std::string(messages::unknownCommand);
}

/// The change count is not compared again: nothing since the first time has taken time worth speaking of.
ClipboardWorker::Result ClipboardWorker::writeFileReferences(const command::WriteFiles& command) {
    const Bytes marker = Bytes::copyOf(*command.marker);
    std::vector<PasteboardItem> items;
    items.reserve(command.paths.size());
    for (const std::string& path : command.paths) {
        items.push_back({{std::string(pasteboardType::fileUrl), Bytes::adopt(fileUrlFromPath(path))},
                         {std::string(markerType), marker}});
    }
    const bool written = replaceContents([&] { return pasteboard_->writeItems(items); });
    return written ? std::nullopt : Result(messages::filesWriteFailed);
}

/// Clears the pasteboard, lets `write` fill it, and takes note of the change as the agent's own. When it
/// fails, the pasteboard is left cleared, and the next poll reports that as a change.
bool ClipboardWorker::replaceContents(const std::function<bool()>& write) {
    const bool written = pasteboard_->update([&] {
        pasteboard_->clearContents();
        return write();
    });
    if (written)
        previousChangeCount_ = pasteboard_->changeCount();
    return written;
}

bool ClipboardWorker::hasChangedSince(std::optional<std::uint64_t> expectedSequence) {
    return expectedSequence && *expectedSequence != sequence();
}

void ClipboardWorker::respond(std::uint64_t requestID, bool ok, std::string_view reason) {
    JsonObject reply;
    reply.add("request_id", requestID).add("ok", ok).add("reason", reason).add("sequence", sequence());
    output_.emit(std::move(reply));
}

} // namespace tavel
