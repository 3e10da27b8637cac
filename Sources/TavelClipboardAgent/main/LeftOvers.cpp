#include "TavelClipboardAgent/main/LeftOvers.h"

#include "Support/DirectoryEntries.h"
#include "Support/ScopeExit.h"
#include "TavelClipboardAgent/main/ExportNames.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>

namespace tavel {

namespace {

bool isOwnPrivateDirectory(const struct stat& status) {
    return S_ISDIR(status.st_mode) && status.st_uid == geteuid() && (status.st_mode & 07777) == 0700;
}

/// Whether the entry of that name is the open directory.
bool isEntry(int parent, const std::string& name, const struct stat& opened) {
    struct stat named {};
    return fstatat(parent, name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 && named.st_dev == opened.st_dev &&
           named.st_ino == opened.st_ino;
}

void removeIfLeftOver(int parent, const std::string& name) {
    const int directory = openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (directory < 0)
        return;
    const ScopeExit closed([&] { close(directory); });
    struct stat status {};
    if (fstat(directory, &status) != 0 || !isOwnPrivateDirectory(status))
        return;
    // Its agent locks a directory that it makes, and then looks whether it is still there: an agent that has
    // made this one but not locked it yet makes another.
    if (flock(directory, LOCK_EX | LOCK_NB) != 0 || !isEntry(parent, name, status))
        return;
    if (std::ranges::all_of(namesIn(directory), exportNames::isExport))
        static_cast<void>(removeEntry(parent, name));
}

} // namespace

void removeLeftOvers(const std::filesystem::path& temporaryDirectory) {
    const int parent = open(temporaryDirectory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (parent < 0)
        return;
    const ScopeExit closed([&] { close(parent); });
    for (const std::string& name : namesIn(parent)) {
        if (exportNames::isDirectory(name))
            removeIfLeftOver(parent, name);
    }
}

} // namespace tavel
