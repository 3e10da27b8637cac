#include "Platform/PasteboardTypes.h"
#include "Support/Process.h"
#include "TavelClipboardAgent/Messages.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <array>
#include <utility>

namespace tavel {

namespace {

/// Identifiers below 2 name no process that could be watched: 1 is what an orphan's parent becomes.
constexpr std::int32_t smallestWatchedParent = 2;

constexpr std::array imageTypes{pasteboardType::png, pasteboardType::tiff};

bool isTooLarge(const std::vector<std::string>& paths) {
    if (paths.size() > maximumFileCount)
        return true;
    std::size_t bytes = 0;
    for (const std::string& path : paths)
        bytes += path.size();
    return bytes > maximumFilePathBytes;
}

} // namespace

void ClipboardWorker::poll() {
    if (expectedParentPID_ >= smallestWatchedParent && parentProcessIdentifier() != expectedParentPID_) {
        stop();
        return;
    }
    const std::int64_t current = pasteboard_->noticedChangeCount();
    if (current == previousChangeCount_)
        return;
    previousChangeCount_ = current;

    const std::uint64_t sequence = sequenceFrom(current);
    const std::string marker = markerText();
    // Before the content is looked at, which can take time: the parent learns at once that something changed.
    output_.emit(event::Announcement{marker, sequence});

    if (captureFiles(marker, sequence))
        return;
    if (captureFormats(current, marker))
        return;
    // A picture is never replaced by the text beside it, not even one that cannot be read.
    if (pasteboard_->availableType(imageTypes))
        captureImage(current, marker);
    else
        captureText(marker, sequence);
}

/// Whether the content is a selection of files, reported or too large.
bool ClipboardWorker::captureFiles(std::string_view marker, std::uint64_t sequence) {
    std::vector<std::string> paths = pasteboard_->filePaths();
    if (paths.empty())
        return false;
    if (isTooLarge(paths)) {
        warn(messages::selectionTooLarge);
        return true;
    }
    output_.emit(
        event::PathsChange{std::string(contentKind::files), std::move(paths), std::string(marker), sequence});
    return true;
}

void ClipboardWorker::captureText(std::string_view marker, std::uint64_t sequence) {
    const auto text = pasteboard_->string(pasteboardType::string);
    if (!text)
        return;
    if (text->size() > maximumTextBytes) {
        warn(messages::textTooLarge);
        return;
    }
    output_.emit(event::TextChange{*text, std::string(marker), sequence});
}

void ClipboardWorker::warn(std::string_view message) {
    output_.emit(event::Log{std::string(logLevel::warning), std::string(message)});
}

std::string ClipboardWorker::markerText() {
    const auto marker = pasteboard_->string(markerType);
    return marker ? std::string(marker->view()) : std::string();
}

} // namespace tavel
