#include "TavelClipboardAgent/main/ImageExport.h"

#include "Support/Error.h"
#include "Support/OutputFile.h"
#include "Support/ScopeExit.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/Images.h"
#include "TavelClipboardAgent/main/Limits.h"

namespace tavel {

namespace {

/// False if no PNG was written.
bool writePng(const ExportContext& context, const std::filesystem::path& file, const Bytes& image) {
    const auto png = pngImage(context.codec, image);
    // Deliberate: there is a warning only if the copied picture is too large, not if its PNG is.
    if (!png || png->size() > maximumImageBytes)
        return false;
    try {
        return context.directory->whileThere([&] { writePrivateFileAtomically(file, png->view()); });
    } catch (const Error&) {
        return false;
    }
}

} // namespace

void exportImage(const ExportContext& context, const ImageExport& pending, const Bytes& image) {
    if (context.worker.expired())
        return; // the slot's owner is gone too
    const ScopeExit release([&] { context.slot->release(); });
    if (!writePng(context, pending.file, image))
        return;
    context.loop.post([worker = context.worker, pending] {
        // Deliberate: if the worker is gone, the file stays until the directory is removed.
        if (const auto alive = worker.lock())
            alive->publishImage(pending);
    });
}

} // namespace tavel
