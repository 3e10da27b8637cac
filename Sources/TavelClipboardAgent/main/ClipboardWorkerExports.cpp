#include "Platform/PasteboardTypes.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/Formats/ValidRepresentation.h"
#include "TavelClipboardAgent/Messages.h"
#include "TavelClipboardAgent/main/Capture.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/ExportNames.h"
#include "TavelClipboardAgent/main/FormatExport.h"
#include "TavelClipboardAgent/main/ImageExport.h"
#include "TavelClipboardAgent/main/Images.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace tavel {

namespace {

/// Whether the format makes a content more than plain text or a PNG.
bool isExtra(const ClipboardFormat& format) {
    return format.type != pasteboardType::png && format.type != pasteboardType::string;
}

/// The most that is read of the format beside those that were captured before it.
std::size_t readingLimit(const ClipboardFormat& format, const Capture& capture) {
    return std::min(maximumBytes(format.kind), capture.room);
}

/// Adds the representation if it was delivered, is valid, and fits beside those before it.
void takeFormat(Pasteboard& pasteboard, const ClipboardFormat& format, Capture& capture) {
    const std::size_t limit = readingLimit(format, capture);
    const bool isText = format.type == pasteboardType::string;
    std::optional<Bytes> content;
    try {
        content = isText ? pasteboard.string(format.type, limit) : pasteboard.data(format.type, limit);
    } catch (const std::bad_alloc&) {
        return; // too large for the memory; a smaller one may still fit
    }
    if (!content || content->size() > capture.room || !validRepresentation(format.name, content->view()))
        return;
    capture.room -= content->size();
    capture.formats.emplace(format.name, std::move(*content));
}

/// The types that the pasteboard offers now and that stand in the table, in the pasteboard's order.
std::string knownTypes(Pasteboard& pasteboard) {
    std::string list;
    for (const std::string& type : pasteboard.types()) {
        if (std::ranges::find(clipboardFormats, type, &ClipboardFormat::type) != clipboardFormats.end())
            list.append(list.empty() ? "" : ", ").append(type);
    }
    return list;
}

} // namespace

/// Makes the next poll treat the content with that change count as new. Used while another export runs, as
/// exports are not queued.
void ClipboardWorker::retryAtNextPoll(std::int64_t current) {
    previousChangeCount_ = current - 1;
}

ExportContext ClipboardWorker::exportContext() {
    return {weak_from_this(),       exportSlot_,           exportDirectory_,
            platform_.imageCodec(), platform_.eventLoop(), output_};
}

/// Starts the job of the capture's export, which takes over the slot. Without a thread for it, the next poll
/// treats the content as new.
void ClipboardWorker::startExport(Capture& capture, EventLoop::Function job) {
    try {
        platform_.eventLoop().runInBackground(std::move(job));
        capture.slot.handOver();
    } catch (const std::exception&) {
        retryAtNextPoll(capture.origin.changeCount);
    }
}

/// A content with rich formats waits for the slot, or is exported; without one of them that can be read, it
/// is captured like any other.
void ClipboardWorker::captureFormats(const std::shared_ptr<Capture>& capture) {
    const auto isOfferedExtra = [&](const ClipboardFormat& format) {
        return isExtra(format) && pasteboardType::isOffered(capture->types, format.type);
    };
    if (!std::ranges::any_of(clipboardFormats, isOfferedExtra))
        capturePlainContent(capture);
    else if (capture->slot.tryAcquire())
        gatherNextFormat(capture);
    else
        retryAtNextPoll(capture->origin.changeCount);
}

/// One at a time, so that no more is fetched than there is room for.
void ClipboardWorker::gatherNextFormat(const std::shared_ptr<Capture>& capture) {
    std::size_t& next = capture->nextFormat;
    while (next < clipboardFormats.size() &&
           !pasteboardType::isOffered(capture->types, clipboardFormats[next].type))
        ++next;
    if (next == clipboardFormats.size()) {
        exportCapturedFormats(capture);
        return;
    }
    const ClipboardFormat& format = clipboardFormats[next];
    gatherFor(capture, {std::string(format.type), readingLimit(format, *capture)},
              &ClipboardWorker::captureFormat);
}

void ClipboardWorker::captureFormat(const std::shared_ptr<Capture>& capture) {
    takeFormat(*pasteboard_, clipboardFormats[capture->nextFormat], *capture);
    ++capture->nextFormat;
    gatherNextFormat(capture);
}

void ClipboardWorker::exportCapturedFormats(const std::shared_ptr<Capture>& capture) {
    if (capture->formats.empty()) {
        capture->slot.release();
        warn(messages::noReadableFormat(knownTypes(*pasteboard_)));
        capturePlainContent(capture);
        return;
    }
    startExport(*capture, [context = exportContext(), origin = capture->origin,
                           formats = std::move(capture->formats)]() mutable {
        exportFormats(context, origin, std::move(formats));
    });
}

void ClipboardWorker::captureImage(const std::shared_ptr<Capture>& capture) {
    if (!capture->slot.tryAcquire()) {
        retryAtNextPoll(capture->origin.changeCount);
        return;
    }
    capture->pictureTypes = offeredPlainPictures(capture->types);
    gatherNextPicture(capture);
}

/// Without a further type, the picture is not delivered, and nothing more is said of it.
void ClipboardWorker::gatherNextPicture(const std::shared_ptr<Capture>& capture) {
    if (!capture->pictureTypes.empty())
        gatherFor(capture, {std::string(capture->pictureTypes.front()), maximumImageBytes},
                  &ClipboardWorker::capturePicture);
}

void ClipboardWorker::capturePicture(const std::shared_ptr<Capture>& capture) {
    std::optional<Bytes> image = pasteboard_->data(capture->pictureTypes.front(), maximumImageBytes);
    if (!image) {
        capture->pictureTypes.erase(capture->pictureTypes.begin());
        gatherNextPicture(capture);
        return;
    }
    if (image->size() > maximumImageBytes || !validImage(platform_.imageCodec(), *image)) {
        warn(messages::imageIgnored);
        return;
    }
    ImageExport pending{capture->origin, {nullptr, exportNames::newPicture()}};
    startExport(*capture, [context = exportContext(), pending = std::move(pending),
                           image = std::move(*image)]() mutable {
        exportImage(context, std::move(pending), image); // moved, as a copy needs memory
    });
}

/// Whether the exported content is still on the pasteboard and has not been discarded.
bool ClipboardWorker::isStillWanted(const ExportOrigin& origin) {
    if (stopping_ || exportGeneration_ != origin.generation)
        return false;
    bool isCurrent = false;
    reserve_.insist([&] { isCurrent = pasteboard_->changeCount() == origin.changeCount; });
    return isCurrent;
}

void ClipboardWorker::publishImage(ImageExport finished) {
    owner_.assertCurrent();
    if (!isStillWanted(finished.origin)) {
        reserve_.insist([&] { finished.file.remove(); });
        return;
    }
    if (previousImage_)
        reserve_.insist([&] { previousImage_->remove(); });
    previousImage_ = std::move(finished.file);
    reserve_.insist(
        [&] { emitExport(contentKind::image, {previousImage_->path().string()}, finished.origin); });
}

void ClipboardWorker::publishFormats(FormatExport finished) {
    owner_.assertCurrent();
    if (!isStillWanted(finished.origin)) {
        reserve_.insist([&] { finished.directory->remove(); });
        return;
    }
    if (previousFormats_ != nullptr)
        reserve_.insist([&] { previousFormats_->remove(); });
    previousFormats_ = std::move(finished.directory);
    reserve_.insist([&] { emitExport(contentKind::formats, finished.paths, finished.origin); });
}

void ClipboardWorker::emitExport(std::string_view kind, const std::vector<std::string>& paths,
                                 const ExportOrigin& origin) {
    output_->emit(
        event::PathsChange{std::string(kind), paths, origin.marker, sequenceFrom(origin.changeCount)});
}

} // namespace tavel
