#pragma once

#include "Platform/EventLoop.h"
#include "Platform/ImageCodec.h"
#include "TavelClipboardAgent/main/ExportDirectory.h"
#include "TavelClipboardAgent/main/ExportSlot.h"
#include "TavelClipboardAgent/main/Protocol/Output.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tavel {

class ClipboardWorker;

/// Identifies the exported content. Set when the content was detected.
struct ExportOrigin {
    std::int64_t changeCount;
    std::int64_t generation; // the export is stale if the worker's generation differs
    std::string marker;
};

/// What a background job needs besides its payload. A running export does not keep the worker alive and
/// touches none of its members. The codec and the loop belong to the platform and outlive the job.
struct ExportContext {
    std::weak_ptr<ClipboardWorker> worker;
    std::shared_ptr<ExportSlot> slot;
    std::shared_ptr<ExportDirectory> directory;
    ImageCodec& codec;
    EventLoop& loop;
    std::shared_ptr<Output> output;
};

} // namespace tavel
