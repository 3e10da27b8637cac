#include "Platform/PasteboardTypes.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/Messages.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <utility>

namespace tavel {

void ClipboardWorker::poll() {
    owner_.assertCurrent();
    if (stopping_)
        return;
    if (isParentLost()) {
        stop();
        return;
    }
    reserve_.refill();
    output_->startWriting();
    // What waits for a parent that does not read is one report at most. The content that is there when the
    // parent reads again is reported then.
    if (!output_->hasWritten(reportedLines_))
        return;
    try {
        const std::int64_t current = pasteboard_->noticedChangeCount();
        if (current == previousChangeCount_)
            return;
        capture(current);
    } catch (const std::exception&) {
        // There is no memory for this content. If it was announced, it stays without a description, like a
        // content that cannot be read; if not, the next tick tries again.
    }
    reportedLines_ = output_->queuedLines();
}

/// Reports the content with that change count.
void ClipboardWorker::capture(std::int64_t current) {
    const std::uint64_t sequence = sequenceFrom(current);
    // The announcement needs the marker. Data of a type that is not offered is never requested: even such a
    // request can block, or make the system ask the user.
    const std::vector<std::string> types = pasteboard_->types();
    const auto markerValue = offeredString(types, markerType, maximumMarkerBytes);
    const bool isMarker = markerValue && markerValue->size() <= maximumMarkerBytes;
    const std::string marker(isMarker ? markerValue->view() : std::string_view());
    // Before the content is read, which can take time: the parent learns at once that something has changed.
    output_->emit(event::Announcement{marker, sequence});
    previousChangeCount_ = current;

    if (captureFiles(marker, sequence))
        return;
    if (captureFormats(types, current, marker))
        return;
    // A picture is never replaced by the text beside it, not even one that cannot be read.
    if (pasteboardType::isAnyOffered(types, plainPictureTypes))
        captureImage(types, current, marker);
    else if (const auto text = offeredString(types, pasteboardType::string, maximumTextBytes))
        captureText(*text, marker, sequence);
}

/// Whether the content is a selection of files, reported or too large. Asks also without public.file-url
/// among the types: a platform may read file URLs from other types.
bool ClipboardWorker::captureFiles(std::string_view marker, std::uint64_t sequence) {
    FileList files = pasteboard_->files(mostFilesOfAContent);
    if (!files.isComplete) {
        warn(messages::selectionTooLarge);
        return true;
    }
    if (files.paths.empty())
        return false;
    output_->emit(event::PathsChange{std::string(contentKind::files), std::move(files.paths),
                                     std::string(marker), sequence});
    return true;
}

void ClipboardWorker::captureText(const Bytes& text, std::string_view marker, std::uint64_t sequence) {
    if (text.size() > maximumTextBytes) {
        warn(messages::textTooLarge);
        return;
    }
    output_->emit(event::TextChange{text, std::string(marker), sequence});
}

void ClipboardWorker::warn(std::string_view message) {
    output_->emit(event::Log{std::string(logLevel::warning), std::string(message)});
}

std::optional<Bytes> ClipboardWorker::offeredString(std::span<const std::string> types, std::string_view type,
                                                    std::size_t limit) {
    return pasteboardType::isOffered(types, type) ? pasteboard_->string(type, limit) : std::nullopt;
}

} // namespace tavel
