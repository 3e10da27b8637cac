#include "Tests/Mac/Gnustep/PasteboardServer.h"

#include "Tests/Support/WaitUntil.h"

#import <AppKit/NSPasteboard.h>
#import <Foundation/Foundation.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#endif

namespace tavel {

namespace {

// Base64 of "GNUstepGSPasteboardServer".
constexpr const char* nameFile = "NSMessagePort/names/R05Vc3RlcEdTUGFzdGVib2FyZFNlcnZlcg==";

constexpr std::chrono::seconds deadline{60};

/// GNUstep never frees a name that it uses to look up the server. That is no leak of ours.
void connect() {
#if __has_feature(address_sanitizer)
    const __lsan::ScopedDisabler disabler;
#endif
    @autoreleasepool {
        [NSPasteboard generalPasteboard];
    }
}

} // namespace

PasteboardServer& PasteboardServer::ofTheTests() {
    static PasteboardServer server;
    return server;
}

void PasteboardServer::start() {
    const std::filesystem::path file = std::filesystem::path(getenv(directoryVariable)) / nameFile;
    std::filesystem::remove(file); // left by a server that was stopped
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(EXIT_FAILURE);
        const int null = open("/dev/null", O_RDWR);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(null, standard);
        execlp("gpbs", "gpbs", "--no-fork", static_cast<char*>(nullptr));
        _exit(EXIT_FAILURE);
    }
    if (process_ < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    waitUntil(
        [&] {
            if (waitpid(process_, nullptr, WNOHANG) == process_)
                throw std::runtime_error(
                    "gpbs does not start. Is the package gnustep-gui-runtime installed?");
            return std::filesystem::exists(file) && std::filesystem::file_size(file) != 0;
        },
        deadline);
    connect();
}

void PasteboardServer::stop() {
    if (process_ <= 0)
        return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    process_ = -1;
}

} // namespace tavel
