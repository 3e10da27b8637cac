#include "Linux/LinuxPlatform.h"

#include "Linux/Base/Module.h"
#include "Linux/Base/SystemLog.h"
#include "Linux/Base/TemporaryDirectory.h"
#include "Support/FileUrl.h"

namespace tavel {

LinuxPlatform::LinuxPlatform()
    : imageCodec_(writeToSystemLog), timestamp_(writeToSystemLog, modulePath("tavel-dates")) {}

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
