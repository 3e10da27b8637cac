#include "Pasteboard/Background.h"
#include "Pasteboard/Invocation.h"
#include "Pasteboard/Tasks.h"
#include "Platform/Platform.h"
#include "Support/Files.h"
#include "Support/Process.h"

#include <unistd.h>

#include <exception>
#include <string>
#include <vector>

namespace {

int fail(const std::exception& error) {
    // If this cannot be written either, the exit status is the only sign.
    static_cast<void>(
        tavel::writeAll(STDERR_FILENO, std::string("tavel-pasteboard: ") + error.what() + "\n"));
    return 1;
}

int run(const std::vector<std::string>& arguments) {
    const auto parsed = tavel::parsePasteboardArguments(arguments);
    if (const auto* const usage = std::get_if<tavel::PasteboardUsage>(&parsed)) {
        const bool written = tavel::writeAll(usage->status == 0 ? STDOUT_FILENO : STDERR_FILENO, usage->text);
        return written ? usage->status : 1;
    }
    const auto& invocation = std::get<tavel::PasteboardInvocation>(parsed);
    const auto platform = tavel::makePlatform();
    const auto pasteboard = platform->openPasteboard(invocation.pasteboard);
    tavel::performTask(invocation.task, platform->eventLoop(), *pasteboard, STDOUT_FILENO);
    if (platform->servesContents())
        tavel::serveInBackground(*platform);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    tavel::reserveStandardDescriptors();
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        return fail(error);
    }
}
