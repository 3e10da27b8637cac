#pragma once

#include <filesystem>
#include <string_view>

namespace tavel {

/// The directory of our modules and helper programs. It is found from the running program's own directory, by
/// the relative path that it has in an installed tree, so that the tree can be moved as a whole. In the tree
/// of a build it is ../lib/tavel. A relative path, from which nothing may be loaded, if /proc does not tell
/// where the program is. Any thread.
std::filesystem::path moduleDirectory();

/// To be called before a module is loaded or a helper program is started. Throws std::runtime_error, naming
/// the path, if it is relative: in the working directory stands anybody's file. Any thread.
void requireAbsolute(const std::filesystem::path& path);

/// The path of the module with that name ("tavel-dates"). Any thread.
std::filesystem::path modulePath(std::string_view name);

/// Loads the module and returns its function of that name. The module is never unloaded; loading it again is
/// cheap. Throws std::runtime_error with the reason, which names the file. Any thread.
void* loadModuleEntry(const std::filesystem::path& module, const char* entryName);

} // namespace tavel
