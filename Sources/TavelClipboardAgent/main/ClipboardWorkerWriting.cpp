#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"
#include "Support/Files.h"
#include "Support/InputFile.h"
#include "Support/Text.h"
#include "TavelClipboardAgent/Formats/LoadRepresentations.h"
#include "TavelClipboardAgent/Messages.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/Images.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tavel {

namespace {

bool isMarker(const std::optional<std::string>& marker) {
    return marker && marker->size() <= maximumMarkerBytes;
}

/// The command's text, if it may be written.
std::optional<Bytes> textFrom(const command::WriteText& command) {
    const auto& text = command.text;
    const bool isValid =
        text && isMarker(command.marker) && text->size() <= maximumTextBytes && isUtf8(text->view());
    return isValid ? text : std::nullopt;
}

/// The command's picture as PNG, if it may be written. Consumes the command's field, so that the original is
/// freed after the conversion.
std::optional<Bytes> pngFrom(ImageCodec& codec, command::WriteImageData& command) {
    const auto image = std::exchange(command.image, std::nullopt);
    return image && image->size() <= maximumHistoryImageBytes ? pngImage(codec, *image) : std::nullopt;
}

PasteboardValue textValue(std::string_view type, Bytes text) {
    return {std::string(type), PasteboardValue::Form::text, std::move(text)};
}

PasteboardValue markerValue(const std::string& marker) {
    return textValue(markerType, Bytes::copyOf(marker));
}

PasteboardValue pngValue(Bytes png) {
    return {std::string(pasteboardType::png), PasteboardValue::Form::data, std::move(png)};
}

bool isExistingAbsolutePath(const std::string& path) {
    return path.starts_with('/') && fileExists(path);
}

/// The file's content, if it may be written as a picture.
std::optional<Bytes> readImageFile(ImageCodec& codec, const std::string& path) {
    try {
        InputFile file(path, InputFile::Links::follow);
        if (file.size() > maximumImageBytes)
            return std::nullopt;
        auto image = file.read(maximumImageBytes + 1); // one byte more, to detect a file that has grown
        return image.size() <= maximumImageBytes && validImage(codec, image) ? std::optional(std::move(image))
                                                                             : std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace

ClipboardWorker::Result ClipboardWorker::execute(const command::WriteText& command) {
    const auto text = textFrom(command);
    if (!text)
        return std::string(messages::invalidText);
    const std::array values{textValue(pasteboardType::string, *text), markerValue(*command.marker)};
    const bool written = noteOwnWrite(pasteboard_->replaceWithValues(values));
    return written ? std::nullopt : Result(messages::textWriteFailed);
}

/// Deliberate: this picture comes from the parent's own history and carries no marker.
ClipboardWorker::Result ClipboardWorker::execute(command::WriteImageData& command) {
    const auto png = pngFrom(platform_.imageCodec(), command);
    if (!png)
        return std::string(messages::invalidHistoryImage);
    const bool written = noteOwnWrite(pasteboard_->replaceWithValues(std::array{pngValue(*png)}));
    return written ? std::nullopt : Result(messages::imageWriteFailed);
}

ClipboardWorker::Result ClipboardWorker::execute(const command::WriteFiles& command) {
    if (hasChangedSince(command.expectedSequence))
        return std::string(messages::changedDuringTransfer);
    if (!isMarker(command.marker) || command.paths.empty() || command.paths.size() > maximumFileCount ||
        !std::ranges::all_of(command.paths, isExistingAbsolutePath))
        return std::string(messages::invalidFiles);
    if (command.kind == contentKind::formats)
        return writeFormats(command);
    if (command.kind == contentKind::image)
        return writeImageFile(command);
    if (command.kind == contentKind::files)
        return writeFileReferences(command);
    return std::string(messages::unknownFormat);
}

ClipboardWorker::Result ClipboardWorker::writeFormats(const command::WriteFiles& command) {
    PasteboardItem item;
    try {
        item = loadRepresentations(command.paths);
    } catch (const std::exception&) {
        return std::string(messages::invalidFormats);
    }
    // Loading can take long.
    if (hasChangedSince(command.expectedSequence))
        return std::string(messages::changedDuringTransfer);
    const auto canHold = [this](const Representation& one) { return pasteboard_->canHold(one); };
    if (!std::ranges::all_of(item, canHold))
        return std::string(messages::formatRefused);
    item.push_back({std::string(markerType), Bytes::copyOf(*command.marker)});
    const bool written = noteOwnWrite(pasteboard_->replaceWithItems({&item, 1}));
    return written ? std::nullopt : Result(messages::formatsWriteFailed);
}

/// The file is written unchanged: the parent sends PNG files.
ClipboardWorker::Result ClipboardWorker::writeImageFile(const command::WriteFiles& command) {
    if (command.paths.size() != 1)
        return std::string(messages::invalidImage);
    const auto image = readImageFile(platform_.imageCodec(), command.paths.front());
    if (!image)
        return std::string(messages::invalidImage);
    if (hasChangedSince(command.expectedSequence))
        return std::string(messages::changedDuringTransfer);
    const std::array values{pngValue(*image), markerValue(*command.marker)};
    const bool written = noteOwnWrite(pasteboard_->replaceWithValues(values));
    return written ? std::nullopt : Result(messages::imageWriteFailed);
}

/// Does not compare the change count again: nothing since the first comparison takes long.
ClipboardWorker::Result ClipboardWorker::writeFileReferences(const command::WriteFiles& command) {
    const Bytes marker = Bytes::copyOf(*command.marker);
    std::vector<PasteboardItem> items;
    items.reserve(command.paths.size());
    for (const std::string& path : command.paths) {
        items.push_back({{std::string(pasteboardType::fileUrl), Bytes::adopt(platform_.fileUrl(path))},
                         {std::string(markerType), marker}});
    }
    const bool written = noteOwnWrite(pasteboard_->replaceWithItems(items));
    return written ? std::nullopt : Result(messages::filesWriteFailed);
}

/// Notes the change count of the agent's own content, which the next poll then does not report. After a
/// failure the next poll reports the cleared pasteboard as a change. Returns whether the write succeeded.
bool ClipboardWorker::noteOwnWrite(std::optional<std::int64_t> changeCount) {
    if (!changeCount)
        return false;
    previousChangeCount_ = *changeCount;
    gathering_.reset();
    return true;
}

bool ClipboardWorker::hasChangedSince(std::optional<std::uint64_t> expectedSequence) {
    return expectedSequence && *expectedSequence != sequence();
}

} // namespace tavel
