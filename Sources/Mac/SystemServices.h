#pragma once

#include <filesystem>
#include <string>

/// Services of macOS that the platform passes on as they are. No Objective-C exception leaves them.
namespace tavel {

/// The current date and time as yyyy-MM-dd-HHmmss (Unicode TR 35), in the user's calendar, digits and time
/// zone. Empty if the system raises an exception. Takes some milliseconds.
std::string localTimestamp();

/// The user's own directory for temporary files, spelled as the system does: its first component is a
/// symbolic link. /tmp if the system names none.
std::filesystem::path userTemporaryDirectory();

/// Exempts this process from App Nap for as long as it runs. Without this, the system would soon slow the
/// timers of a process without windows to intervals of seconds, and changes of the clipboard would be noticed
/// late. The computer may still go to sleep. Main thread only; further calls do nothing.
void keepPaceInBackground();

/// Writes a line to the unified log, in the clear, and nowhere else. Any thread.
void writeToSystemLog(const std::string& message);

} // namespace tavel
