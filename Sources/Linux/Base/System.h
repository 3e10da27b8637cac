#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace tavel {

/// Takes one message without a line feed. Each user of this type says who calls it, and on which thread.
using Log = std::function<void(const std::string& message)>;

/// Writes the message to the system log as an error of a user-level program (syslog(3)). Any thread.
void writeToSystemLog(const std::string& message);

/// The directory for the user's temporary files: what TMPDIR names, if that is an absolute path in UTF-8 to a
/// directory in which this process may make files, else /tmp.
std::filesystem::path userTemporaryDirectory();

} // namespace tavel
