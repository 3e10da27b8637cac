#include "Linux/Store/StoreFiles.h"

#include "Support/Error.h"
#include "Support/Files.h"
#include "Support/ScopeExit.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace tavel {

namespace {

[[noreturn]] void fail(const std::filesystem::path& path, int error) {
    throw Error("Pasteboard", 1,
                "The pasteboard store cannot be opened: " + path.string() + ": " +
                    std::generic_category().message(error));
}

} // namespace

StoreOpeningLock::StoreOpeningLock(const std::filesystem::path& directory)
    : descriptor_(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (descriptor_ < 0)
        fail(directory, errno);
    while (flock(descriptor_, LOCK_EX) != 0) {
        if (errno != EINTR) {
            const int error = errno;
            close(descriptor_);
            fail(directory, error);
        }
    }
}

StoreOpeningLock::~StoreOpeningLock() {
    close(descriptor_);
}

void allocateLockFile(const std::filesystem::path& file, std::size_t bytes) {
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (descriptor < 0)
        fail(file, errno);
    const ScopeExit closeFile([&] { close(descriptor); });
    struct stat status {};

    if (fstat(descriptor, &status) != 0)
        fail(file, errno);
    const auto present = static_cast<std::size_t>(status.st_size);
    // Written, as not every system has a call that allocates. Existing bytes may be in use, and stay.
    if (present < bytes && !writeAll(descriptor, std::string(bytes - present, '\0')))
        fail(file, errno);
}

StoreUse::StoreUse(const std::filesystem::path& file)
    : descriptor_(::open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600)) {
    if (descriptor_ < 0)
        fail(file, errno);
    isAlone_ = flock(descriptor_, LOCK_EX | LOCK_NB) == 0;
}

StoreUse::~StoreUse() {
    close(descriptor_);
}

void StoreUse::share() const {
    // Nobody holds it alone now: whoever does also holds the opening lock.
    flock(descriptor_, LOCK_SH | LOCK_NB);
}

} // namespace tavel
