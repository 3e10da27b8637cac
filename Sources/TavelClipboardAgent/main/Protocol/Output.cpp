#include "TavelClipboardAgent/main/Protocol/Output.h"

#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/Throughput.h"
#include "TavelClipboardAgent/main/Protocol/Encoder.h"

#include <cerrno>
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
    // Without a reader there is no parent left to serve.
    if (!writeAll(descriptor_, *line) && errno == EPIPE)
        endByBrokenPipeSignal();
}

} // namespace tavel
