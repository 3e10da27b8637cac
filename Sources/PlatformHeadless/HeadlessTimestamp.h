#pragma once

#include <functional>
#include <string>

namespace tavel {

/// What gives the present date and time on a machine without a display, as Platform::localTimestamp does.
/// Main thread.
std::function<std::string()> makeHeadlessTimestamp(std::function<void(const std::string& message)> log);

} // namespace tavel
