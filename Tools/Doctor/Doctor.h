#pragma once

#include <chrono>
#include <filesystem>

namespace tavel {

/// Examines what the agent needs on this machine, tries the agent itself, and writes a report for people on
/// standard output. Reads no content of the user's clipboard, but its types and, where the system keeps the
/// content, the sizes; writes to a pasteboard of its own only. Returns the exit status, as `Report::finish`
/// says. `agent` is the agent's executable, `timeout` limits each wait for it. Throws Error if the report
/// cannot be written. Main thread; SIGPIPE must be ignored.
int runDoctor(const std::filesystem::path& agent, std::chrono::milliseconds timeout);

} // namespace tavel
