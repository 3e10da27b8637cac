#include "Linux/Base/DateModule.h"

#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

namespace tavel {
namespace {

std::optional<std::string> now(const std::string& locale, const std::string& pattern) {
    UErrorCode status = U_ZERO_ERROR;
    // Handles the name "C" and a character set after a dot.
    const icu::Locale canonical = icu::Locale::createCanonical(locale.c_str());
    const icu::SimpleDateFormat format(icu::UnicodeString::fromUTF8(pattern), canonical, status);
    if (U_FAILURE(status))
        return std::nullopt;
    icu::UnicodeString text;
    format.format(icu::Calendar::getNow(), text);
    std::string utf8;
    text.toUTF8String(utf8);
    return utf8;
}

constexpr DateModule dateModule{now};

} // namespace
} // namespace tavel

extern "C" __attribute__((visibility("default"))) const tavel::DateModule* tavelDateModule() {
    return &tavel::dateModule;
}
