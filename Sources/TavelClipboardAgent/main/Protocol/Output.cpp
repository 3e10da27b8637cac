#include "TavelClipboardAgent/main/Protocol/Output.h"

#include "Support/Files.h"
#include "Support/Throughput.h"
#include "TavelClipboardAgent/main/Protocol/Encoder.h"

#include <cstddef>

namespace tavel {

namespace {

/// The usual capacity of a pipe.
constexpr std::size_t largeLineBytes = std::size_t{64} * 1024;

} // namespace

void Output::emit(const AgentMessage& message) {
    const auto line = encodeMessage(message);
    if (!line)
        return;
    if (line->size() >= largeLineBytes)
        enlargePipe(descriptor_);
    const std::lock_guard guard(lock_);
    // The end of standard input and the parent watch detect a parent that is gone, not this write.
    static_cast<void>(writeAll(descriptor_, *line));
}

} // namespace tavel
