#pragma once

#include <string>

namespace tavel {

/// Writes a line to the unified log, for everybody to read, and nowhere else. Any thread.
void writeToSystemLog(const std::string& message);

} // namespace tavel
