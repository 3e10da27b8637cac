#pragma once

#include <filesystem>
#include <string>

namespace tavel {

/// The directory that the running program's executable is in. `programName` is what it was called as. Throws
/// Error when it cannot be found out.
std::filesystem::path executableDirectory(const std::string& programName);

} // namespace tavel
