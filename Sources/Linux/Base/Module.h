#pragma once

#include <filesystem>
#include <string_view>

namespace tavel {

/// Where modules and helping programs lie: beside the directory of the running program, in ../lib/tavel.
std::filesystem::path moduleDirectory();

/// Where the module of that name lies ("tavel-images").
std::filesystem::path modulePath(std::string_view name);

/// Loads the module and gives its function of that name. It stays loaded until the process ends, also when it
/// is not used; loading it again costs next to nothing. Throws std::runtime_error with the system's reason,
/// which names the file. Any thread.
void* loadModuleEntry(const std::filesystem::path& module, const char* entryName);

} // namespace tavel
