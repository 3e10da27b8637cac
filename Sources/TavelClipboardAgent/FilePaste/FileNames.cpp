#include "TavelClipboardAgent/FilePaste/FileNames.h"

#include "Support/Text.h"
#include "TavelClipboardAgent/FilePaste/UnicodeText.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"

#include <algorithm>
#include <array>

namespace tavel {

namespace {

/// Stem and extension together, in UTF-16 code units.
constexpr std::size_t longestName = 179;

/// The file's whole name in UTF-8 (NAME_MAX of ext4, APFS and most others).
constexpr std::size_t longestNameInBytes = 255;

/// A proposed stem, in characters as people count them.
constexpr std::size_t longestSuggestion = 60;

constexpr std::u32string_view forbiddenCharacters = U"<>:\"/\\|?*";

/// Windows opens these as devices, with any extension.
constexpr std::array reservedNames{
    std::u32string_view(U"CON"),     std::u32string_view(U"PRN"),    std::u32string_view(U"AUX"),
    std::u32string_view(U"NUL"),     std::u32string_view(U"CLOCK$"), std::u32string_view(U"CONIN$"),
    std::u32string_view(U"CONOUT$"),
};
constexpr std::u32string_view portNumbers = U"123456789¹²³";

constexpr char32_t byteOrderMark = 0xFEFF;

template <typename Range, typename Value>
bool contains(const Range& range, const Value& value) {
    return std::ranges::find(range, value) != std::ranges::end(range);
}

/// The format that is pasted with that extension; null if none is.
const ClipboardFormat* pastedFormat(std::string_view ext) {
    const auto* const found = std::ranges::find_if(clipboardFormats, [ext](const ClipboardFormat& format) {
        return format.pasting != FilePasting::none && format.fileExtensions.front() == ext;
    });
    return found == clipboardFormats.end() ? nullptr : &*found;
}

bool isForbidden(char32_t c) {
    return forbiddenCharacters.find(c) != std::u32string_view::npos;
}

bool isReserved(std::u32string_view stem) {
    std::u32string base(stem.substr(0, stem.find(U'.')));
    std::ranges::transform(base, base.begin(), unicode::upperCase);
    if (contains(reservedNames, std::u32string_view(base)))
        return true;
    if (!base.starts_with(U"COM") && !base.starts_with(U"LPT"))
        return false;
    // A line separator after the number does not make it a different name.
    const bool endsLine = base.size() == 5 && unicode::isNewline(base[4]);
    return (base.size() == 4 || endsLine) && contains(portNumbers, base[3]);
}

bool isValidStem(std::u32string_view stem, std::string_view ext) {
    return pastedFormat(ext) != nullptr && !stem.empty() && stem.back() != U'.' &&
           unicode::lengthInUtf16(stem) + ext.size() <= longestName &&
           std::ranges::none_of(stem, [](char32_t c) { return unicode::isControl(c) || isForbidden(c); }) &&
           !isReserved(stem);
}

/// The beginning of the text's first line without forbidden characters; nullopt if the text is not UTF-8.
std::optional<std::string> firstLineStem(std::string_view text) {
    if (!isUtf8(text))
        return std::nullopt;
    // Only the first line is decoded; the text may be long.
    auto line = unicode::fromUtf8(text.substr(0, text.find_first_of("\n\r")));
    if (!line)
        return std::nullopt;
    std::erase(*line, byteOrderMark);
    line->erase(std::ranges::find_if(*line, unicode::isNewline), line->end());
    std::u32string stem(unicode::firstCharacters(*line, longestSuggestion));
    std::erase_if(stem, isForbidden);
    return unicode::toUtf8(unicode::trimmed(stem, unicode::isBlank));
}

bool isStorable(std::string_view name) {
    return name.size() <= longestNameInBytes;
}

/// The stem's longest beginning, in characters as people count them, of which the name is storable. Empty if
/// there is none.
std::string shortened(const std::string& stem, std::string_view ext) {
    const std::u32string scalars = unicode::fromUtf8(stem).value_or(U"");
    for (std::size_t count = longestSuggestion; count > 0; --count) {
        std::string beginning =
            unicode::toUtf8(unicode::trimmed(unicode::firstCharacters(scalars, count), unicode::isBlank));
        if (isStorable(beginning + "." + std::string(ext)))
            return beginning;
    }
    return {};
}

std::string_view kindOf(std::string_view ext) {
    const ClipboardFormat* const format = pastedFormat(ext);
    if (format != nullptr && format->kind == FormatKind::document)
        return "Document";
    return format != nullptr && format->kind == FormatKind::text ? "Texte" : "Image";
}

} // namespace

std::optional<std::string> validName(std::string_view stem, std::string_view ext) {
    const auto scalars = unicode::fromUtf8(stem);
    if (!scalars)
        return std::nullopt;
    const std::u32string_view trimmed =
        unicode::trimmed(*scalars, [](char32_t c) { return unicode::isBlank(c) || unicode::isNewline(c); });
    if (!isValidStem(trimmed, ext))
        return std::nullopt;
    return unicode::toUtf8(trimmed) + "." + std::string(ext);
}

std::optional<std::string> storableName(std::string_view stem, std::string_view ext) {
    auto name = validName(stem, ext);
    return name && isStorable(*name) ? name : std::nullopt;
}

std::string suggestion(std::string_view data, std::string_view ext,
                       const std::function<std::string()>& timestamp) {
    if (ext == "txt") {
        const auto candidate = firstLineStem(data);
        if (candidate && validName(*candidate, ext)) {
            std::string stem = shortened(*candidate, ext);
            if (validName(stem, ext))
                return stem;
        }
    }
    return std::string(kindOf(ext)) + "-" + timestamp();
}

} // namespace tavel
