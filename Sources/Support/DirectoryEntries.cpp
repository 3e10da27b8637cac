#include "Support/DirectoryEntries.h"

#include "Support/ScopeExit.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string_view>

namespace tavel {

namespace {

/// Each level holds a descriptor open.
constexpr int deepestLevel = 32;

struct StreamCloser {
    void operator()(DIR* stream) const { closedir(stream); }
};

bool removeEntry(int directory, const std::string& name, int level) {
    if (unlinkat(directory, name.c_str(), 0) == 0 || errno == ENOENT)
        return true;
    if (errno != EISDIR && errno != EPERM) // Linux says EISDIR, POSIX wants EPERM
        return false;
    const int opened = openat(directory, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (opened < 0)
        return false;
    const ScopeExit closed([&] { close(opened); });
    if (level < deepestLevel) {
        for (const std::string& inner : namesIn(opened))
            removeEntry(opened, inner, level + 1);
    }
    return unlinkat(directory, name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT;
}

} // namespace

std::vector<std::string> namesIn(int directory) {
    std::vector<std::string> names;
    // A stream of its own, as reading moves the position of the description that a duplicate would share.
    const int opened = openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, StreamCloser> stream(opened < 0 ? nullptr : fdopendir(opened));
    if (stream == nullptr) {
        if (opened >= 0)
            close(opened);
        return names;
    }
    while (const dirent* const entry = readdir(stream.get())) { // NOLINT(concurrency-mt-unsafe): own stream
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    return names;
}

bool removeEntry(int directory, const std::string& name) {
    return removeEntry(directory, name, 0);
}

} // namespace tavel
