#include "TavelClipboardAgent/main/FormatExport.h"

#include "Support/Error.h"
#include "Support/MemoryReserve.h"
#include "Support/ScopeExit.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/Messages.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/ExportNames.h"
#include "TavelClipboardAgent/main/Images.h"

#include <cerrno>
#include <new>
#include <utility>

namespace tavel {

namespace {

std::size_t totalBytes(const CapturedFormats& formats) {
    std::size_t total = 0;
    for (const auto& [name, content] : formats)
        total += content.size();
    return total;
}

/// The picture that a PNG is made from: the first in the catalogue's order.
const Bytes* pictureIn(const CapturedFormats& formats) {
    for (const ClipboardFormat& format : clipboardFormats) {
        if (format.kind != FormatKind::picture)
            continue;
        if (const auto found = formats.find(format.name); found != formats.end())
            return &found->second;
    }
    return nullptr;
}

/// Tries only one picture. If it cannot be converted or the PNG does not fit, no PNG is added.
void addPng(ImageCodec& codec, CapturedFormats& formats) {
    const Bytes* const picture = formats.contains("image.png") ? nullptr : pictureIn(formats);
    if (picture == nullptr)
        return;
    try {
        auto png = pngImage(codec, *picture);
        if (png && totalBytes(formats) + png->size() <= maximumFormatsBytes)
            formats.emplace("image.png", std::move(*png));
    } catch (const std::bad_alloc&) {
        // The picture is too large for the memory. The other files may still be written.
    }
}

/// Makes the directory and the files in it. False if the export directory has been removed. Throws Error.
bool writeFormats(ExportDirectory& parent, std::shared_ptr<PrivateDirectory>& directory,
                  const CapturedFormats& formats) {
    bool there = parent.whileThere([&] {
        directory = std::make_shared<PrivateDirectory>(
            parent.directory(ExportDirectory::Missing::make)->makeDirectory(exportNames::newFormats()));
    });
    // One file at a time, so that the removal at the agent's end waits for one file at most.
    for (auto one = formats.begin(); there && one != formats.end(); ++one)
        there = parent.whileThere([&] { directory->writeFile(std::string(one->first), one->second.view()); });
    return there;
}

/// Throws Error, and std::exception if there is no memory; `directory` has then been made, or is null.
void writeAndPost(const ExportContext& context, const ExportOrigin& origin,
                  std::shared_ptr<PrivateDirectory>& directory, const CapturedFormats& formats) {
    if (!writeFormats(*context.directory, directory, formats))
        return;
    FormatExport pending{origin, directory, {}};
    for (const auto& [name, content] : formats)
        pending.paths.push_back((directory->path() / name).string());
    context.loop.post([worker = context.worker, pending]() mutable {
        // Deliberate: unlike a picture's file, the directory is removed if the worker is gone.
        if (const auto alive = worker.lock())
            alive->publishFormats(std::move(pending));
        else
            static_cast<void>(pending.directory->remove());
    });
}

/// Not posted to the main thread: the parent still gets it if the agent is about to end.
void warn(Output& output, const Error& error) {
    output.emit(event::Log{std::string(logLevel::warning), messages::formatsNotPrepared(error)});
}

} // namespace

void exportFormats(const ExportContext& context, const ExportOrigin& origin, CapturedFormats formats) {
    if (context.worker.expired())
        return; // the slot's owner is gone too
    const ScopeExit release([&] { context.slot->release(); });
    MemoryReserve reserve;
    std::shared_ptr<PrivateDirectory> directory;
    const auto discard = [&] {
        if (directory != nullptr)
            directory->remove();
    };
    try {
        addPng(context.codec, formats);
        writeAndPost(context, origin, directory, formats);
    } catch (const Error& error) {
        reserve.insist(discard);
        reserve.insist([&] { warn(*context.output, error); });
    } catch (const std::exception&) {
        reserve.insist(discard);
        reserve.insist([&] { warn(*context.output, Error("NSPOSIXErrorDomain", ENOMEM, "no memory")); });
    }
}

} // namespace tavel
