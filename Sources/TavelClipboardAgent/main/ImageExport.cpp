#include "TavelClipboardAgent/main/ImageExport.h"

#include "Support/Error.h"
#include "Support/MemoryReserve.h"
#include "Support/ScopeExit.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/Images.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <exception>
#include <utility>

namespace tavel {

namespace {

/// False if no PNG was written. Throws std::exception if there is no memory.
bool writePng(const ExportContext& context, ImageFile& file, const Bytes& image) {
    const auto png = pngImage(context.codec, image);
    // Deliberate: there is a warning only if the copied picture is too large, not if its PNG is.
    if (!png || png->size() > maximumImageBytes)
        return false;
    try {
        return context.directory->whileThere([&] {
            file.directory = context.directory->directory(ExportDirectory::Missing::fail);
            file.directory->writeFileAtomically(file.name, png->view());
        });
    } catch (const Error&) {
        return false;
    }
}

} // namespace

void exportImage(const ExportContext& context, ImageExport pending, const Bytes& image) {
    if (context.worker.expired())
        return; // the slot's owner is gone too
    const ScopeExit release([&] { context.slot->release(); });
    try {
        if (!writePng(context, pending.file, image))
            return;
        context.loop.post([worker = context.worker, pending]() mutable {
            // Deliberate: if the worker is gone, the file stays until the directory is removed.
            if (const auto alive = worker.lock())
                alive->publishImage(std::move(pending));
        });
    } catch (const std::exception&) {
        MemoryReserve reserve;
        if (pending.file.directory != nullptr)
            reserve.insist([&] { pending.file.remove(); });
    }
}

} // namespace tavel
