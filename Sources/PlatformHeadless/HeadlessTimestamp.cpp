#include "PlatformHeadless/HeadlessTimestamp.h"

#include "PlatformDates/LocalTimestamp.h"
#include "Support/Module.h"

#include <memory>
#include <utility>

namespace tavel {

std::function<std::string()> makeHeadlessTimestamp(std::function<void(const std::string& message)> log) {
    const auto timestamp = std::make_shared<LocalTimestamp>(std::move(log), modulePath("tavel-dates"));
    return [timestamp] { return timestamp->now(); };
}

} // namespace tavel
