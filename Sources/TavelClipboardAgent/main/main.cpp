#include "Support/Process.h"
#include "TavelClipboardAgent/main/Arguments.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"

#include <unistd.h>

#include <string>
#include <vector>

int main(int argc, char** argv) {
    tavel::disableCoreDumps();
    const tavel::StandardPipes pipes = tavel::takeStandardPipes();
    tavel::blockBrokenPipeSignal();
    tavel::refuseNewPrivileges();
    const std::vector<std::string> arguments(argv, argv + argc);
    // Neither is ever destroyed: the reader of commands may still be blocked, and use them, while the process
    // ends.
    static auto& platform = *tavel::makePlatform().release();
    static auto& worker = *new std::shared_ptr(std::make_shared<tavel::ClipboardWorker>(
        platform, tavel::ClipboardWorker::Pipes{pipes.input, pipes.output}, tavel::parentPID(arguments),
        tavel::testPasteboardName(arguments)));
    worker->run();
    // A job may be deep in an image library, whose static objects must not be destroyed under it.
    if (worker->isExporting())
        _exit(0);
    return 0;
}
