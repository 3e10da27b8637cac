#include "TavelClipboardAgent/main/CommandReader.h"

#include "Support/LineReader.h"
#include "Support/MemoryReserve.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/Limits.h"
#include "TavelClipboardAgent/main/Protocol/CommandDecoder.h"

#include <optional>
#include <utility>

namespace tavel {

namespace {

/// Runs `action` until there is memory for it. Meanwhile the parent's commands wait in the pipe, and the main
/// thread frees memory by carrying out those before.
template <typename Action>
void waitForMemory(MemoryReserve& reserve, const Action& action) {
    while (!reserve.insist(action)) {
        // Each attempt takes a second.
    }
}

} // namespace

void readCommands(int descriptor, Platform& platform, const std::weak_ptr<ClipboardWorker>& worker) {
    EventLoop& loop = platform.eventLoop();
    MemoryReserve reserve;
    std::optional<LineReader> reader;
    waitForMemory(reserve, [&] { reader.emplace(descriptor, std::size_t{maximumHistoryImageBytes}); });
    CommandDecoder decoder;
    for (;;) {
        std::optional<LineReader::Line> line;
        while (!reserve.insist([&] { line = reader->next(); }))
            reader->skipLine();
        if (!line)
            break;
        std::optional<ClipboardCommand> command;
        // A line for which the parser finds no memory is dropped: not even its request identifier is known.
        reserve.insist([&] { command = decoder.decode(*line); });
        line.reset(); // only the command holds the payload now, which is freed with it
        if (!command) {
            loop.stopWaiting(); // the main thread looks after the memory, and the line may have taken much
            continue;
        }
        const bool quits = std::holds_alternative<command::Quit>(*command);
        // Shared, because a function may be copied; and allocated first, so that a failure leaves the
        // command.
        std::shared_ptr<ClipboardCommand> shared;
        waitForMemory(reserve, [&] { shared = std::make_shared<ClipboardCommand>(std::move(*command)); });
        waitForMemory(reserve, [&] {
            loop.post([worker, shared] {
                if (const auto alive = worker.lock())
                    alive->handle(std::move(*shared));
            });
        });
        if (quits)
            platform.expectEnd();
        reserve.refill();
    }
    waitForMemory(reserve, [&] {
        loop.post([worker, &loop] {
            if (const auto alive = worker.lock())
                alive->endOfInput();
            loop.stopWaiting();
        });
    });
    platform.expectEnd();
}

} // namespace tavel
