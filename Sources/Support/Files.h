#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tavel {

/// Whether a file of any kind exists at `path`. Follows links. No file has a path with a zero byte.
bool fileExists(const std::string& path);

/// Whether a directory exists at `path`. Follows links.
bool isDirectory(const std::string& path);

/// Creates the directory `path` and its missing parents with mode 0700. Leaves an existing directory
/// unchanged and returns true. False on any failure, with errno set.
bool createPrivateDirectory(const std::filesystem::path& path);

/// Writes all of `content` to the descriptor, in as few calls as the system allows. Continues interrupted and
/// partial writes, and waits for a descriptor in non-blocking mode. False on any other error, with errno set.
bool writeAll(int descriptor, std::string_view content);

} // namespace tavel
