#pragma once

#include <filesystem>

namespace tavel {

/// Where this user's embedded pasteboards live: below $XDG_RUNTIME_DIR if that is a directory of this user
/// (XDG Base Directory Specification), else below the temporary directory, with the user's number in its
/// name.
std::filesystem::path pasteboardStoreDirectory();

/// Creates the directory with mode 0700, or checks the one that is there. Throws Error if it cannot be
/// created, is no directory (a symbolic link is none), belongs to another user, or is open to others: whoever
/// can write there could read and replace what the user copies.
void preparePasteboardStoreDirectory(const std::filesystem::path& directory);

} // namespace tavel
