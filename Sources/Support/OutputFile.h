#pragma once

#include <filesystem>
#include <string_view>

namespace tavel {

// Files that only their owner can read (0600), from their first byte on. Failures throw FileError.

/// Writes a file. An existing one is replaced byte by byte; after a failure a part may be there.
void writePrivateFile(const std::filesystem::path& path, std::string_view content);

/// Writes a file that is there whole or not at all: it gets its name when it is complete. Needs room for it
/// beside an existing one.
void writePrivateFileAtomically(const std::filesystem::path& path, std::string_view content);

} // namespace tavel
