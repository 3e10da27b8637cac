#include "Linux/Base/System.h"

#include "Support/Files.h"
#include "Support/Text.h"

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdlib>

namespace tavel {

namespace {

/// A relative path would depend on the working directory. One that is not UTF-8 could not be announced in
/// JSON.
bool isUsable(const char* path) {
    return path[0] == '/' && isUtf8(path) && isDirectory(path) &&
           faccessat(AT_FDCWD, path, W_OK | X_OK, AT_EACCESS) == 0;
}

} // namespace

void writeToSystemLog(const std::string& message) {
    syslog(LOG_USER | LOG_ERR, "%s", message.c_str());
}

std::filesystem::path userTemporaryDirectory() {
    // POSIX, XBD 8.3: TMPDIR names the directory.
    const char* const named = std::getenv("TMPDIR");
    return named != nullptr && isUsable(named) ? named : "/tmp";
}

} // namespace tavel
