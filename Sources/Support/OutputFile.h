#pragma once

#include <filesystem>
#include <string_view>

namespace tavel {

// Writers of files that only their owner can read (mode 0600), from the first byte on. Failures throw
// FileError.

/// Writes a file, or overwrites an existing one in place. After a failure, a part of the content may remain.
void writePrivateFile(const std::filesystem::path& path, std::string_view content);

/// Writes a file under a temporary name and renames it, so that it appears whole or not at all. An existing
/// file stays until then, so the disk needs room for both.
void writePrivateFileAtomically(const std::filesystem::path& path, std::string_view content);

} // namespace tavel
