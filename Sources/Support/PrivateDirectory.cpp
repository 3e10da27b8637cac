#include "Support/PrivateDirectory.h"

#include "Support/DirectoryEntries.h"
#include "Support/FileError.h"
#include "Support/Files.h"
#include "Support/Uuid.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace tavel {

namespace {

constexpr mode_t directoryMode = 0700;
constexpr mode_t fileMode = 0600;
constexpr std::string_view partialSuffix = ".partial";

[[noreturn]] void fail(int error, const std::filesystem::path& path) {
    throw FileError(FileError::Operation::write, error, path.string());
}

/// 0 if this is a directory of this user's own, with no rights of others any more; otherwise an errno value.
int takeOwnership(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0)
        return errno;
    if (status.st_uid != geteuid())
        return EPERM;
    if ((status.st_mode & 0077) != 0 && fchmod(descriptor, status.st_mode & directoryMode) != 0)
        return errno;
    return 0;
}

int openDirectory(int parent, const char* name) {
    return openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

/// 0 on success, otherwise an errno value.
int makeFile(int directory, const std::string& name, std::string_view content) {
    const int file =
        openat(directory, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, fileMode);
    if (file < 0)
        return errno;
    // The umask restricts the mode given to openat.
    int failure = fchmod(file, fileMode) == 0 && writeAll(file, content) ? 0 : errno;
    if (close(file) != 0 && failure == 0 && errno != EINTR)
        failure = errno; // network file systems report a full disk only here
    return failure;
}

} // namespace

PrivateDirectory::PrivateDirectory(int descriptor, std::filesystem::path path)
    : descriptor_(descriptor), path_(std::move(path)) {}

PrivateDirectory::PrivateDirectory(PrivateDirectory&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), path_(std::move(other.path_)) {}

PrivateDirectory& PrivateDirectory::operator=(PrivateDirectory&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    std::swap(path_, other.path_);
    return *this;
}

PrivateDirectory::~PrivateDirectory() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

PrivateDirectory PrivateDirectory::open(const std::filesystem::path& path) {
    PrivateDirectory opened(-1, path); // first, because a descriptor without an owner would stay open
    opened.descriptor_ = openDirectory(AT_FDCWD, path.c_str());
    if (opened.descriptor_ < 0)
        fail(errno, path);
    if (const int failure = takeOwnership(opened.descriptor_))
        fail(failure, path);
    return opened;
}

PrivateDirectory PrivateDirectory::make(const std::filesystem::path& path) {
    // A path that leads to something else is left to `open`, which says what is wrong with it.
    if (!createPrivateDirectory(path) && errno != EEXIST)
        fail(errno, path);
    return open(path);
}

bool PrivateDirectory::isInPlace() const {
    struct stat named {};
    struct stat opened {};
    if (lstat(path_.c_str(), &named) != 0)
        return errno != ENOENT && errno != ENOTDIR; // nothing says that it has gone
    return fstat(descriptor_, &opened) != 0 ||
           (named.st_dev == opened.st_dev && named.st_ino == opened.st_ino);
}

bool PrivateDirectory::tryLock() const {
    return flock(descriptor_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

PrivateDirectory PrivateDirectory::makeDirectory(const std::string& name) const {
    std::filesystem::path path = path_ / name;
    if (mkdirat(descriptor_, name.c_str(), directoryMode) != 0)
        fail(errno, path);
    // An unusual umask may have removed rights of the owner.
    static_cast<void>(!fchmodat(descriptor_, name.c_str(), directoryMode, 0));
    const int descriptor = openDirectory(descriptor_, name.c_str());
    if (descriptor < 0) {
        const int failure = errno;
        removeEntry(name);
        fail(failure, path);
    }
    return {descriptor, std::move(path)};
}

void PrivateDirectory::writeFile(const std::string& name, std::string_view content) const {
    if (const int failure = makeFile(descriptor_, name, content))
        fail(failure, path_ / name);
}

void PrivateDirectory::writeFileAtomically(const std::string& name, std::string_view content) const {
    const std::string partial = "." + makeUuid() + std::string(partialSuffix);
    int failure = makeFile(descriptor_, partial, content);
    if (failure == 0 && renameat(descriptor_, partial.c_str(), descriptor_, name.c_str()) != 0)
        failure = errno;
    if (failure == 0)
        return;
    unlinkat(descriptor_, partial.c_str(), 0);
    fail(failure, path_ / name);
}

bool PrivateDirectory::removeEntry(const std::string& name) const {
    return tavel::removeEntry(descriptor_, name);
}

bool PrivateDirectory::remove() {
    bool removed = true;
    for (const std::string& name : namesIn(descriptor_))
        removed = removeEntry(name) && removed;
    // If another directory takes its place just now, rmdir removes it only if it is empty.
    return removed && (!isInPlace() || rmdir(path_.c_str()) == 0);
}

bool isPartialFileName(std::string_view name) {
    return name.size() > partialSuffix.size() && name.starts_with('.') && name.ends_with(partialSuffix) &&
           isUuid(name.substr(1, name.size() - 1 - partialSuffix.size()));
}

} // namespace tavel
