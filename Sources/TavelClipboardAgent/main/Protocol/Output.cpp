#include "TavelClipboardAgent/main/Protocol/Output.h"

#include "Support/Files.h"
#include "Support/Throughput.h"
#include "TavelClipboardAgent/main/Protocol/Encoder.h"

#include <cstddef>

namespace tavel {

namespace {

/// What a pipe usually holds.
constexpr std::size_t largeLineBytes = std::size_t{64} * 1024;

} // namespace

void Output::emit(const AgentMessage& message) {
    const auto line = encodeMessage(message);
    if (!line)
        return;
    if (line->size() >= largeLineBytes)
        enlargePipe(descriptor_);
    const std::lock_guard guard(lock_);
    // A parent that is gone is noticed by the end of standard input and by the parent watch, not here.
    static_cast<void>(writeAll(descriptor_, *line));
}

} // namespace tavel
