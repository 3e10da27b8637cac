#include "TavelClipboardAgent/main/CommandReader.h"

#include "Support/LineReader.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/Protocol/CommandDecoder.h"

#include <utility>

namespace tavel {

void readCommands(int descriptor, EventLoop& loop, const std::weak_ptr<ClipboardWorker>& worker) {
    LineReader reader(descriptor);
    CommandDecoder decoder;
    while (auto line = reader.next()) {
        auto command = decoder.decode(*line);
        line.reset(); // only the command holds a large payload now, which is freed with it
        if (!command)
            continue;
        loop.post([worker, command = std::move(*command)]() mutable {
            if (const auto alive = worker.lock())
                alive->handle(std::move(command));
        });
    }
    loop.post([worker, &loop] {
        if (const auto alive = worker.lock())
            alive->stop();
        loop.stopWaiting();
    });
}

} // namespace tavel
