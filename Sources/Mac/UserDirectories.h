#pragma once

#include <filesystem>

namespace tavel {

/// The user's own directory for temporary files, as the system names it: its first part is a symbolic link.
std::filesystem::path userTemporaryDirectory();

} // namespace tavel
