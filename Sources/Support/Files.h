#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tavel {

/// Whether something exists at `path`, links followed. A path with a zero byte names nothing.
bool fileExists(const std::string& path);

/// Whether a directory exists at `path`, links followed.
bool isDirectory(const std::string& path);

/// Creates the directory `path` and what is missing above it. The directory itself gets 0700; one that exists
/// already is left as it is and counts as created. False on any failure, with errno set.
bool createPrivateDirectory(const std::filesystem::path& path);

/// Removes `directory` with everything in it, without following links. False on any failure.
bool removeTree(const std::filesystem::path& directory);

/// Writes all of `content` to the descriptor, in one call where the system takes it whole. Interrupted and
/// partial writes are continued, and a descriptor in non-blocking mode is waited for. False on any other
/// error, with errno set.
bool writeAll(int descriptor, std::string_view content);

} // namespace tavel
