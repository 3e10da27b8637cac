#include "TavelClipboardAgent/main/ImageExport.h"

#include "Support/Error.h"
#include "Support/OutputFile.h"
#include "Support/ScopeExit.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/Images.h"
#include "TavelClipboardAgent/main/Limits.h"

namespace tavel {

namespace {

/// False if there is no PNG file now.
bool writePng(const ExportContext& context, const std::filesystem::path& file, const Bytes& image) {
    const auto png = pngImage(context.codec, image);
    // Deliberate: only what was copied is warned of, not what it grew to.
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
        return; // the slot went with its owner
    const ScopeExit release([&] { context.slot->release(); });
    if (!writePng(context, pending.file, image))
        return;
    context.loop.post([worker = context.worker, pending] {
        // Deliberate: without the worker the file stays; it goes with the directory.
        if (const auto alive = worker.lock())
            alive->publishImage(pending);
    });
}

} // namespace tavel
