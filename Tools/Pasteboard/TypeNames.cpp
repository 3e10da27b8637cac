#include "Pasteboard/TypeNames.h"

#include "Platform/PasteboardTypes.h"
#include "Support/Text.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"

#include <algorithm>
#include <filesystem>
#include <ranges>

namespace tavel {

namespace {

constexpr std::string_view fileUrlName = "file-url";

/// A format's short name: "png" for image.png, but "text" for plain text.
std::string_view shortName(const ClipboardFormat& format) {
    return format.type == pasteboardType::string ? "text" : format.name.substr(format.name.find('.') + 1);
}

constexpr std::size_t nameColumnWidth = 10;

} // namespace

std::string typeIdentifier(std::string_view name) {
    if (name == fileUrlName)
        return std::string(pasteboardType::fileUrl);
    const auto* const found = std::ranges::find(clipboardFormats, name, shortName);
    return std::string(found != clipboardFormats.end() ? found->type : name);
}

std::string typeIdentifierForFile(const std::string& file) {
    std::string ending = std::filesystem::path(file).extension().string();
    ending.erase(0, 1); // the dot
    std::ranges::transform(ending, ending.begin(), asciiLowerCase);
    const auto endsSo = [&ending](const ClipboardFormat& format) {
        return std::ranges::find(format.fileExtensions, ending) != format.fileExtensions.end();
    };
    const auto* const found = std::ranges::find_if(clipboardFormats, endsSo);
    const bool isKnown = !ending.empty() && found != clipboardFormats.end();
    return std::string(isKnown ? found->type : pasteboardType::string);
}

std::string typeNameTable() {
    std::string table;
    const auto addLine = [&table](std::string_view name, std::string_view identifier) {
        table.append("  ").append(name).append(nameColumnWidth - name.size(), ' ');
        table.append(identifier).append("\n");
    };
    // Backwards, so that text comes first.
    for (const ClipboardFormat& format : std::views::reverse(clipboardFormats))
        addLine(shortName(format), format.type);
    addLine(fileUrlName, pasteboardType::fileUrl);
    return table;
}

} // namespace tavel
