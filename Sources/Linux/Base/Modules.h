#pragma once

#include <filesystem>
#include <string_view>

namespace tavel {

/// The directory of our modules and helper programs: ../lib/tavel, relative to the running program's own
/// directory. Any thread.
std::filesystem::path moduleDirectory();

/// The path of the module with that name ("tavel-images"). Any thread.
std::filesystem::path modulePath(std::string_view name);

/// Loads the module and returns its function of that name. The module is never unloaded; loading it again is
/// cheap. Throws std::runtime_error with the system's reason, which names the file. Any thread.
void* loadModuleEntry(const std::filesystem::path& module, const char* entryName);

} // namespace tavel
