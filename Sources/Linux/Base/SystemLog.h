#pragma once

#include <functional>
#include <string>

namespace tavel {

/// Takes one message without a line feed. Who calls it, and on which thread, is said where it is passed.
using Log = std::function<void(const std::string& message)>;

/// Writes the message to the system's log as an error of a user-level program (syslog(3)). Any thread.
void writeToSystemLog(const std::string& message);

} // namespace tavel
