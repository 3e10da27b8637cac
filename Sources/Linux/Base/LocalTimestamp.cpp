#include "Linux/Base/LocalTimestamp.h"

#include "Linux/Base/Modules.h"

#include <array>
#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <utility>

namespace tavel {

namespace {

constexpr const char* pattern = "yyyy-MM-dd-HHmmss";

/// The user's locale for dates (POSIX, XBD 8.2).
std::string dateLocale() {
    for (const char* const name : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): no thread calls setenv
        if (value != nullptr && *value != '\0')
            return value;
    }
    return "C";
}

std::string commonTimestamp() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d-%H%M%S", &parts)};
}

} // namespace

LocalTimestamp::LocalTimestamp(Log log, std::filesystem::path module)
    : log_(std::move(log)), path_(std::move(module)) {}

std::string LocalTimestamp::now() {
    if (!isLoadAttempted_) {
        isLoadAttempted_ = true;
        try {
            module_ = reinterpret_cast<DateModuleEntry>(loadModuleEntry(path_, dateModuleEntryName))();
        } catch (const std::runtime_error& error) {
            log_(std::string("Dates cannot be written the user's way: ") + error.what());
        }
    }
    const auto text = module_ == nullptr ? std::nullopt : module_->now(dateLocale(), pattern);
    return text ? *text : commonTimestamp();
}

} // namespace tavel
