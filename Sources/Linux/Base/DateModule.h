#pragma once

#include <optional>
#include <string>

namespace tavel {

/// Interface of the module tavel-dates: dates in the forms of all countries. Main thread only; no function
/// throws.
struct DateModule {
    /// Formats the present date and time by a pattern (Unicode TR 35), with the calendar and the digits of
    /// `locale`, a POSIX name such as fr_FR.UTF-8, in the user's time zone. nullopt if ICU has no such
    /// format.
    std::optional<std::string> (*now)(const std::string& locale, const std::string& pattern);
};

/// The module's only exported function and its name.
using DateModuleEntry = const DateModule* (*)();
inline constexpr const char* dateModuleEntryName = "tavelDateModule";

} // namespace tavel
