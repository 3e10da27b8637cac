#pragma once

#include <filesystem>

namespace tavel {

/// Removes the export directories that this user's agents left in the directory for temporary files when they
/// were killed: what is named like one, holds only what an agent makes, belongs to this user with mode 0700,
/// and has no lock. Follows no link. Whatever it cannot examine or remove stays. Any thread.
void removeLeftOvers(const std::filesystem::path& temporaryDirectory);

} // namespace tavel
