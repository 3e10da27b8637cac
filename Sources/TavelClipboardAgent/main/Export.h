#pragma once

#include "Platform/EventLoop.h"
#include "Platform/ImageCodec.h"
#include "TavelClipboardAgent/main/ExportDirectory.h"
#include "TavelClipboardAgent/main/ExportSlot.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tavel {

class ClipboardWorker;

/// What identifies the content that an export was begun for; fixed when the content was detected.
struct ExportOrigin {
    std::int64_t changeCount;
    std::int64_t generation; // an export is stale when the worker's has moved
    std::string marker;
};

/// What a background job needs besides its payload. It holds the worker weakly: a running export does not
/// keep it alive, and touches none of its fields. The codec and the loop are the platform's and outlive it.
struct ExportContext {
    std::weak_ptr<ClipboardWorker> worker;
    std::shared_ptr<ExportSlot> slot;
    std::shared_ptr<ExportDirectory> directory;
    ImageCodec& codec;
    EventLoop& loop;
};

} // namespace tavel
