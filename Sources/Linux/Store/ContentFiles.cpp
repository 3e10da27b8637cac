#include "Linux/Store/ContentFiles.h"

#include "Support/DirectoryEntries.h"
#include "Support/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

/// Only one process writes at a time. What a killed one leaves is overwritten by the next.
constexpr const char* unfinishedName = "unfinished";

/// Leaves room to count on for ever.
constexpr std::int64_t maximumCount = std::numeric_limits<std::int64_t>::max() / 2;

std::string nameOf(const BoardKey& key, std::int64_t count) {
    return key.digits() + '-' + std::to_string(count);
}

std::optional<std::pair<BoardKey, std::int64_t>> parseName(std::string_view name) {
    const std::size_t hyphen = name.find('-');
    if (hyphen == std::string_view::npos)
        return std::nullopt;
    auto key = BoardKey::fromDigits(name.substr(0, hyphen));
    const std::string_view digits = name.substr(hyphen + 1);
    std::int64_t count = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
    if (!key || error != std::errc() || end != digits.data() + digits.size() || count < 1 ||
        count > maximumCount)
        return std::nullopt;
    return std::pair(std::move(*key), count);
}

/// Writes the content to a new file. False with errno set.
bool fill(int file, std::string_view head, std::span<const PasteboardItem> items) {
    if (fchmod(file, 0600) != 0 || !writeAll(file, head)) // the umask restricts the mode given to openat
        return false;
    for (const PasteboardItem& representations : items) {
        for (const Representation& one : representations) {
            if (!writeAll(file, one.data.view()))
                return false;
        }
    }
    return fdatasync(file) == 0;
}

} // namespace

std::optional<ContentFile> ContentFiles::open(const BoardKey& key, std::int64_t count) const {
    // Without O_NONBLOCK, opening a FIFO waits for its writer.
    const int file = openat(directory_.descriptor(), nameOf(key, count).c_str(),
                            O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    return file < 0 ? std::nullopt : ContentFile::read(file);
}

bool ContentFiles::write(const BoardKey& key, std::int64_t count,
                         std::span<const PasteboardItem> items) const {
    const int directory = directory_.descriptor();
    const auto head = contentFileHead(items);
    if (!head)
        return false;
    unlinkat(directory, unfinishedName, 0);
    const int file =
        openat(directory, unfinishedName, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0)
        return false;
    const bool isFilled = fill(file, *head, items);
    if (close(file) == 0 && isFilled &&
        renameat(directory, unfinishedName, directory, nameOf(key, count).c_str()) == 0) {
        fsync(directory); // a failure only matters if the system fails, too
        return true;
    }
    unlinkat(directory, unfinishedName, 0);
    return false;
}

void ContentFiles::remove(const BoardKey& key, std::int64_t count) const {
    unlinkat(directory_.descriptor(), nameOf(key, count).c_str(), 0);
}

void ContentFiles::removeOlder(const BoardKey& key, std::int64_t count) const {
    for (const std::string& name : namesIn(directory_.descriptor())) {
        const auto found = parseName(name);
        if (found && found->first.digits() == key.digits() && found->second < count)
            unlinkat(directory_.descriptor(), name.c_str(), 0);
    }
}

std::map<BoardKey, std::int64_t> ContentFiles::tidy() const {
    std::map<BoardKey, std::int64_t> counts;
    unlinkat(directory_.descriptor(), unfinishedName, 0);
    for (const std::string& name : namesIn(directory_.descriptor())) {
        if (const auto found = parseName(name)) {
            std::int64_t& latest = counts[found->first];
            latest = std::max(latest, found->second);
        }
    }
    for (auto& [key, count] : counts) {
        if (!open(key, count) && write(key, count + 1, {}))
            ++count;
        removeOlder(key, count);
    }
    return counts;
}

} // namespace tavel
