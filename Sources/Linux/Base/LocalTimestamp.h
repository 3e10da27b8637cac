#pragma once

#include "Linux/Base/DateModule.h"
#include "Linux/Base/SystemLog.h"

#include <filesystem>
#include <string>

namespace tavel {

/// Says what time it is, with the module tavel-dates, which is loaded the first time and stays. Main thread.
class LocalTimestamp {
public:
    /// Without a module at that path, times are said in the common calendar and European digits, which is
    /// logged once.
    LocalTimestamp(Log log, std::filesystem::path module);

    /// The present date and time as yyyy-MM-dd-HHmmss (Unicode TR 35), in the user's calendar, digits (by
    /// LC_ALL, LC_TIME or LANG) and time zone.
    std::string now();

private:
    Log log_;
    std::filesystem::path path_;
    bool isLoaded_ = false; // or cannot be
    const DateModule* module_ = nullptr;
};

} // namespace tavel
