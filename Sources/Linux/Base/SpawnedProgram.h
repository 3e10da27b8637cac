#pragma once

#include <sys/types.h>

#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace tavel {

/// Starts a program as a child of the calling thread, and returns its process identifier. The caller reaps
/// it.
///
/// The child inherits the given descriptors and no others, however those were opened: the first of them
/// becomes its descriptor 0, the next one 1, and so on. It blocks and ignores no signal. `arguments` do not
/// include the program's own name. `environment` is an array like `environ`.
///
/// Throws std::runtime_error if the path is relative, and std::system_error, which names the path, if the
/// program cannot be started. Any thread.
pid_t spawnProgram(const std::filesystem::path& program, std::vector<std::string> arguments,
                   char* const* environment, std::span<const int> descriptors);

} // namespace tavel
