#pragma once

#include <string>

namespace tavel {

/// The present date and time as yyyy-MM-dd-HHmmss (Unicode TR 35), in the calendar, the digits and the time
/// zone of the user. Takes some milliseconds.
std::string localTimestamp();

} // namespace tavel
