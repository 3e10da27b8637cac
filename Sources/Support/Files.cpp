#include "Support/Files.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace tavel {

namespace {

bool statusOf(const std::string& path, struct stat& status) {
    // As a C string, the path would end at its zero byte and name another file.
    return path.find('\0') == std::string::npos && stat(path.c_str(), &status) == 0;
}

} // namespace

bool fileExists(const std::string& path) {
    struct stat status {};

    return statusOf(path, status);
}

bool isDirectory(const std::string& path) {
    struct stat status {};

    return statusOf(path, status) && S_ISDIR(status.st_mode);
}

bool createPrivateDirectory(const std::filesystem::path& path) {
    // parent_path of a path that ends in a slash only drops the slash.
    const std::filesystem::path directory = path.has_filename() ? path : path.parent_path();
    int status = mkdir(directory.c_str(), 0700);
    if (status != 0 && errno == ENOENT && directory.has_parent_path()) {
        if (!createPrivateDirectory(directory.parent_path()))
            return false;
        status = mkdir(directory.c_str(), 0700);
    }
    if (status == 0)
        return chmod(directory.c_str(), 0700) == 0; // an unusual umask may have removed rights of the owner
    if (errno != EEXIST)
        return false;
    if (isDirectory(directory.string()))
        return true;
    errno = EEXIST;
    return false;
}

bool writeAll(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = write(descriptor, content.data(), content.size());
        if (written >= 0) {
            content.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            // A process that shares the pipe may have set O_NONBLOCK on it.
            pollfd writable{descriptor, POLLOUT, 0};
            if (poll(&writable, 1, -1) < 0 && errno != EINTR)
                return false;
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace tavel
