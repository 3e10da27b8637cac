#include "Support/OutputFile.h"

#include "Support/FileError.h"
#include "Support/Files.h"
#include "Support/Uuid.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace tavel {

namespace {

constexpr mode_t privateMode = 0600;

/// 0 on success, otherwise an errno value. Closes the descriptor.
int fill(int descriptor, std::string_view content) {
    // The umask restricts the mode given to open, and an existing file keeps its mode.
    int failure = fchmod(descriptor, privateMode) == 0 && writeAll(descriptor, content) ? 0 : errno;
    if (close(descriptor) != 0 && failure == 0 && errno != EINTR)
        failure = errno; // network file systems report a full disk only here
    return failure;
}

int writeWith(int flags, const std::filesystem::path& path, std::string_view content) {
    const int descriptor =
        open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | flags, privateMode);
    return descriptor < 0 ? errno : fill(descriptor, content);
}

} // namespace

void writePrivateFile(const std::filesystem::path& path, std::string_view content) {
    const int failure = writeWith(O_TRUNC, path, content);
    if (failure != 0)
        throw FileError(FileError::Operation::write, failure, path.string());
}

void writePrivateFileAtomically(const std::filesystem::path& path, std::string_view content) {
    // In the same directory, because a file can be renamed only within its file system.
    const std::filesystem::path partial = path.parent_path() / ("." + makeUuid() + ".partial");
    int failure = writeWith(O_EXCL, partial, content);
    if (failure == 0 && std::rename(partial.c_str(), path.c_str()) != 0)
        failure = errno;
    if (failure == 0)
        return;
    unlink(partial.c_str());
    throw FileError(FileError::Operation::write, failure, path.string());
}

} // namespace tavel
