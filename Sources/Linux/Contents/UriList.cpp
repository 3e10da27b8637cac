#include "Linux/Contents/UriList.h"

#include "Support/Text.h"

#include <algorithm>
#include <array>

namespace tavel {

namespace {

constexpr std::string_view fileScheme = "file://";

/// The words before the URIs of copied files: the operation, and a name that Nautilus puts in front of it.
constexpr std::array<std::string_view, 3> headings{"copy", "cut", "x-special/nautilus-clipboard"};

std::string_view trimmed(std::string_view line) {
    constexpr std::string_view blanks(" \t\0", 3);
    const std::size_t first = line.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return line.substr(first, line.find_last_not_of(blanks) - first + 1);
}

/// Visits the lines that are not blank, trimmed. Collects none: a list may have millions.
void visitLines(std::string_view text, const UriVisitor& visit) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        if (!line.empty() && !visit(line))
            return;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

} // namespace

std::string uriListOf(std::span<const std::string> urls) {
    std::string list;
    for (const std::string& url : urls)
        list.append(url).append("\r\n");
    return list;
}

std::string copiedFilesOf(std::span<const std::string> urls) {
    std::string text = "copy";
    for (const std::string& url : urls)
        text.append("\n").append(url);
    return text;
}

void visitUrisInList(std::string_view list, const UriVisitor& visit) {
    visitLines(list, [&](std::string_view line) { return line.starts_with('#') || visit(line); });
}

void visitUrisInCopiedFiles(std::string_view text, const UriVisitor& visit) {
    bool isInHeadings = true;
    visitLines(text, [&](std::string_view line) {
        isInHeadings = isInHeadings && std::ranges::find(headings, line) != headings.end();
        return isInHeadings || visit(line);
    });
}

std::string withoutOwnHost(std::string_view uri, std::string_view hostName) {
    if (!equalsIgnoringAsciiCase(uri.substr(0, fileScheme.size()), fileScheme))
        return std::string(uri);
    const std::string_view rest = uri.substr(fileScheme.size());
    const std::size_t slash = rest.find('/');
    if (hostName.empty() || slash == std::string_view::npos ||
        !equalsIgnoringAsciiCase(rest.substr(0, slash), hostName))
        return std::string(uri);
    return std::string(fileScheme).append(rest.substr(slash));
}

} // namespace tavel
