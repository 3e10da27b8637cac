#pragma once

#include <optional>
#include <string>

namespace tavel {

/// What the module tavel-dates offers: dates as people of all countries write them. Main thread only; nothing
/// throws.
struct DateModule {
    /// The present date and time by a pattern (Unicode TR 35), in the calendar and the digits of `locale`, a
    /// POSIX name such as fr_FR.UTF-8, and in the user's time zone. Nothing if that cannot be said.
    std::optional<std::string> (*now)(const std::string& locale, const std::string& pattern);
};

/// The module's only exported function, and its name.
using DateModuleEntry = const DateModule* (*)();
inline constexpr const char* dateModuleEntryName = "tavelDateModule";

} // namespace tavel
