#include "Support/FreeMemory.h"
#include "Support/Process.h"
#include "TavelClipboardAgent/main/Arguments.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"

#include <unistd.h>

#include <chrono>
#include <exception>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using Worker = std::shared_ptr<tavel::ClipboardWorker>;

/// Null if there is no memory or no thread for the agent now. Neither the platform nor the worker is ever
/// destroyed: the reader of commands may still be blocked, and use them, while the process ends.
Worker* makeWorker(const tavel::StandardPipes& pipes, int argc, char** argv) {
    try {
        const std::vector<std::string> arguments(argv, argv + argc);
        auto platform = tavel::makePlatform();
        auto worker = std::make_unique<Worker>();
        *worker = std::make_shared<tavel::ClipboardWorker>(
            *platform, tavel::ClipboardWorker::Pipes{pipes.input, pipes.output}, tavel::parentPID(arguments),
            tavel::testPasteboardName(arguments));
        static_cast<void>(platform.release());
        return worker.release();
    } catch (const std::exception&) {
        return nullptr;
    }
}

/// Tries for five seconds; meanwhile the parent's commands wait in the pipe.
Worker* makeWorkerWithinTime(const tavel::StandardPipes& pipes, int argc, char** argv) {
    constexpr int attempts = 50;
    constexpr std::chrono::milliseconds pause{100};
    for (int attempt = 1; attempt < attempts; ++attempt) {
        if (auto* const worker = makeWorker(pipes, argc, argv))
            return worker;
        std::this_thread::sleep_for(pause);
    }
    return makeWorker(pipes, argc, argv);
}

} // namespace

int main(int argc, char** argv) {
    tavel::disableCoreDumps();
    tavel::useOneHeap();
    const tavel::StandardPipes pipes = tavel::takeStandardPipes();
    tavel::blockBrokenPipeSignal();
    tavel::refuseNewPrivileges();
    static const Worker* const made = makeWorkerWithinTime(pipes, argc, argv);
    if (made == nullptr)
        return 0;
    const Worker& worker = *made;
    worker->run();
    // A job may be deep in an image library, whose static objects must not be destroyed under it.
    if (worker->isExporting())
        _exit(0);
    return 0;
}
