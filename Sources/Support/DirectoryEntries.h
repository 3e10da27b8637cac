#pragma once

#include <string>
#include <vector>

namespace tavel {

// Directories by descriptor, or AT_FDCWD for names that are paths. Both functions leave the descriptor open,
// and follow no links.

/// The names in the directory but "." and "..", in no order. Fewer of them after an error of reading.
std::vector<std::string> namesIn(int directory);

/// Removes a file, a link, or a directory with everything in it. True if it did not exist, false on any
/// failure, with errno set. Does not go deeper than 32 directories.
bool removeEntry(int directory, const std::string& name);

} // namespace tavel
