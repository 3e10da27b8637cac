#include "Linux/Base/System.h"

#include <syslog.h>

#include <cstdlib>

namespace tavel {

void writeToSystemLog(const std::string& message) {
    syslog(LOG_USER | LOG_ERR, "%s", message.c_str());
}

std::filesystem::path userTemporaryDirectory() {
    // POSIX, XBD 8.3: TMPDIR names the directory. A relative path is not used: it would depend on the working
    // directory, and the parent receives absolute paths.
    const char* const named = std::getenv("TMPDIR");
    if (named != nullptr && named[0] == '/')
        return named;
    return "/tmp";
}

} // namespace tavel
