#pragma once

#include <filesystem>

namespace tavel {

/// The directory of this user's embedded pasteboards: below $XDG_RUNTIME_DIR if that is a directory of this
/// user (XDG Base Directory Specification), else below the temporary directory, with the user's number in its
/// name.
std::filesystem::path pasteboardStoreDirectory();

/// Creates the directory with mode 0700, or checks the existing one. Throws Error if it cannot be created, is
/// not a directory (a symbolic link is not), belongs to another user, or is accessible to others, who could
/// read and replace what the user copies.
void preparePasteboardStoreDirectory(const std::filesystem::path& directory);

} // namespace tavel
