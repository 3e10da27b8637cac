#pragma once

#include <filesystem>

namespace tavel {

/// The directory for the user's temporary files, as an absolute path. It may not exist.
std::filesystem::path userTemporaryDirectory();

} // namespace tavel
