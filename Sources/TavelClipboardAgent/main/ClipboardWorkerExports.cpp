#include "Platform/PasteboardTypes.h"
#include "Support/ScopeExit.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/Formats/ValidRepresentation.h"
#include "TavelClipboardAgent/Messages.h"
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

std::optional<Bytes> readFormat(Pasteboard& pasteboard, const ClipboardFormat& format, std::size_t room) {
    const std::size_t limit = std::min(maximumBytes(format.kind), room);
    const bool isText = format.type == pasteboardType::string;
    return isText ? pasteboard.string(format.type, limit) : pasteboard.data(format.type, limit);
}

/// Every representation that is offered, valid, and fits beside those before it.
CapturedFormats readFormats(Pasteboard& pasteboard, std::span<const std::string> types) {
    CapturedFormats captured;
    std::size_t room = maximumFormatsBytes;
    for (const ClipboardFormat& format : clipboardFormats) {
        if (!pasteboardType::isOffered(types, format.type))
            continue;
        std::optional<Bytes> content;
        try {
            content = readFormat(pasteboard, format, room);
        } catch (const std::bad_alloc&) {
            continue; // too large for the memory; a smaller one may still fit
        }
        if (!content || content->size() > room || !validRepresentation(format.name, content->view()))
            continue;
        room -= content->size();
        captured.emplace(format.name, std::move(*content));
    }
    return captured;
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

/// Starts the job of an export, which takes over the slot. Without a thread for it, the next poll treats the
/// content as new, and the slot stays the caller's.
bool ClipboardWorker::startExport(std::int64_t current, EventLoop::Function job) {
    try {
        platform_.eventLoop().runInBackground(std::move(job));
        return true;
    } catch (const std::exception&) {
        retryAtNextPoll(current);
        return false;
    }
}

/// Whether the content has rich formats; their export has then started, or waits for the slot.
bool ClipboardWorker::captureFormats(std::span<const std::string> types, std::int64_t current,
                                     const std::string& marker) {
    const auto isOfferedExtra = [&](const ClipboardFormat& format) {
        return isExtra(format) && pasteboardType::isOffered(types, format.type);
    };
    if (!std::ranges::any_of(clipboardFormats, isOfferedExtra))
        return false;
    if (!exportSlot_->tryAcquire()) {
        retryAtNextPoll(current);
        return true;
    }
    bool started = false;
    const ScopeExit release([&] {
        if (!started)
            exportSlot_->release();
    });
    CapturedFormats formats = readFormats(*pasteboard_, types);
    if (formats.empty()) {
        warn(messages::noReadableFormat(knownTypes(*pasteboard_)));
        return false;
    }
    started = startExport(
        current,
        [context = exportContext(), origin = ExportOrigin{current, exportGeneration_, marker},
         formats = std::move(formats)]() mutable { exportFormats(context, origin, std::move(formats)); });
    return true;
}

void ClipboardWorker::captureImage(std::span<const std::string> types, std::int64_t current,
                                   const std::string& marker) {
    if (!exportSlot_->tryAcquire()) {
        retryAtNextPoll(current);
        return;
    }
    bool started = false;
    const ScopeExit release([&] {
        if (!started)
            exportSlot_->release();
    });
    std::optional<Bytes> image = plainPicture(*pasteboard_, types);
    const bool usable =
        image && image->size() <= maximumImageBytes && validImage(platform_.imageCodec(), *image);
    if (!usable) {
        if (image)
            warn(messages::imageIgnored);
        return;
    }
    ImageExport pending{{current, exportGeneration_, marker}, {nullptr, exportNames::newPicture()}};
    started = startExport(current, [context = exportContext(), pending = std::move(pending),
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
