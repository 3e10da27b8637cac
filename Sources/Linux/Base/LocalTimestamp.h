#pragma once

#include "Linux/Base/DateModule.h"
#include "Linux/Base/System.h"

#include <filesystem>
#include <string>

namespace tavel {

/// Formats the present time with the module tavel-dates. The first call of `now` loads the module, which then
/// stays loaded. Main thread only.
class LocalTimestamp {
public:
    /// Without a module at that path, `now` uses the Gregorian calendar and European digits, and logs the
    /// reason once.
    LocalTimestamp(Log log, std::filesystem::path module);

    /// The present date and time as yyyy-MM-dd-HHmmss (Unicode TR 35), in the user's time zone and with the
    /// calendar and digits of the user's locale (LC_ALL, LC_TIME or LANG).
    std::string now();

private:
    Log log_;
    std::filesystem::path path_;
    bool isLoadAttempted_ = false;
    const DateModule* module_ = nullptr;
};

} // namespace tavel
