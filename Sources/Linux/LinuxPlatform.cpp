#include "Linux/LinuxPlatform.h"

#include "Linux/Base/Modules.h"
#include "Linux/Base/System.h"
#include "Support/FileUrl.h"

#include <csignal>
#include <utility>

namespace tavel {

LinuxPlatform::LinuxPlatform()
    : imageCodec_(writeToSystemLog), timestamp_(writeToSystemLog, modulePath("tavel-dates")) {
    // Where the parent has ignored this signal, the system would not say how a program of ours has ended.
    std::signal(SIGCHLD, SIG_DFL);
}

bool LinuxPlatform::watchParent(std::int32_t processIdentifier, std::function<void()> lost) {
    return parentWatch_.start(processIdentifier, std::move(lost));
}

std::string LinuxPlatform::fileUrl(const std::string& path) {
    return fileUrlFromPath(path);
}

std::string LinuxPlatform::localTimestamp() {
    return timestamp_.now();
}

std::filesystem::path LinuxPlatform::temporaryDirectory() {
    return userTemporaryDirectory();
}

void LinuxPlatform::log(const std::string& message) {
    writeToSystemLog(message);
}

} // namespace tavel
