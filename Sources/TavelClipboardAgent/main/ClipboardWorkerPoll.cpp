#include "Platform/PasteboardTypes.h"
#include "Support/Process.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/Messages.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <utility>

namespace tavel {

namespace {

/// Parents below 2 are not watched: 1 is the parent of every orphan.
constexpr std::int32_t smallestWatchedParent = 2;

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
    owner_.assertCurrent();
    if (expectedParentPID_ >= smallestWatchedParent && parentProcessIdentifier() != expectedParentPID_) {
        stop();
        return;
    }
    const std::int64_t current = pasteboard_->noticedChangeCount();
    if (current == previousChangeCount_)
        return;
    previousChangeCount_ = current;

    const std::uint64_t sequence = sequenceFrom(current);
    // The announcement needs the marker. Data of a type that is not offered is never requested: even such a
    // request can block, or make the system ask the user.
    const std::vector<std::string> types = pasteboard_->types();
    const auto markerValue = offeredString(types, markerType);
    const std::string marker(markerValue ? markerValue->view() : std::string_view());
    // Before the content is read, which can take time: the parent learns at once that something has changed.
    output_.emit(event::Announcement{marker, sequence});

    if (captureFiles(marker, sequence))
        return;
    if (captureFormats(types, current, marker))
        return;
    // A picture is never replaced by the text beside it, not even one that cannot be read.
    if (pasteboardType::isAnyOffered(types, plainPictureTypes))
        captureImage(types, current, marker);
    else if (const auto text = offeredString(types, pasteboardType::string))
        captureText(*text, marker, sequence);
}

/// Whether the content is a selection of files, reported or too large. Asks also without public.file-url
/// among the types: a platform may read file URLs from other types.
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

void ClipboardWorker::captureText(const Bytes& text, std::string_view marker, std::uint64_t sequence) {
    if (text.size() > maximumTextBytes) {
        warn(messages::textTooLarge);
        return;
    }
    output_.emit(event::TextChange{text, std::string(marker), sequence});
}

void ClipboardWorker::warn(std::string_view message) {
    owner_.assertCurrent();
    output_.emit(event::Log{std::string(logLevel::warning), std::string(message)});
}

std::optional<Bytes> ClipboardWorker::offeredString(std::span<const std::string> types,
                                                    std::string_view type) {
    return pasteboardType::isOffered(types, type) ? pasteboard_->string(type) : std::nullopt;
}

} // namespace tavel
