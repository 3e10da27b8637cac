#include "Linux/Store/StoreDirectory.h"

#include "Linux/Base/System.h"
#include "Support/Error.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace tavel {

namespace {

bool isOwnDirectory(const char* path) {
    struct stat status {};

    return stat(path, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

[[noreturn]] void refuse(const std::filesystem::path& directory, const std::string& why) {
    throw Error("Pasteboard", 1, "The pasteboard directory " + directory.string() + " " + why);
}

} // namespace

std::filesystem::path pasteboardStoreDirectory() {
    const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && runtime[0] == '/' && isOwnDirectory(runtime))
        return std::filesystem::path(runtime) / "tavel-pasteboard";
    return userTemporaryDirectory() / ("tavel-pasteboard-" + std::to_string(geteuid()));
}

void preparePasteboardStoreDirectory(const std::filesystem::path& directory) {
    if (mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST)
        refuse(directory, "cannot be created: " + std::generic_category().message(errno));

    struct stat status {};

    if (lstat(directory.c_str(), &status) != 0)
        refuse(directory, "cannot be examined: " + std::generic_category().message(errno));
    if (!S_ISDIR(status.st_mode))
        refuse(directory, "is not a directory");
    if (status.st_uid != geteuid())
        refuse(directory, "belongs to another user");
    if ((status.st_mode & 0077) != 0)
        refuse(directory, "is open to other users");
}

} // namespace tavel
