#include "Linux/Contents/TargetNames.h"

#include "Platform/PasteboardTypes.h"
#include "Support/Text.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace tavel::targetName {

namespace {

struct Name {
    std::string_view type;
    std::string_view target;
    bool isOffered; // or only read
};

/// Preferred to the MIME names of the same type.
constexpr std::array preferredNames{Name{pasteboardType::string, utf8String, true}};

/// Read only if no MIME name of the same type is offered.
constexpr std::array otherNames{
    Name{pasteboardType::string, latin1String, true},
    Name{pasteboardType::string, anyText, true},
    Name{pasteboardType::string, compoundText, false},
    Name{pasteboardType::fileUrl, uriList, true},
    Name{pasteboardType::fileUrl, gnomeCopiedFiles, true},
    Name{pasteboardType::fileUrl, mateCopiedFiles, true},
    Name{pasteboardType::fileUrl, nautilusClipboard, false},
};

constexpr bool isUsed(const MimeName& mime) {
    return !mime.name.empty();
}

constexpr std::size_t countMimeNames() {
    std::ptrdiff_t count = 0;
    for (const ClipboardFormat& format : clipboardFormats)
        count += std::ranges::count_if(format.mimeNames, isUsed);
    return static_cast<std::size_t>(count);
}

constexpr auto allNames() {
    std::array<Name, preferredNames.size() + countMimeNames() + otherNames.size()> all{};
    auto* next = std::ranges::copy(preferredNames, all.begin()).out;
    for (const ClipboardFormat& format : clipboardFormats) {
        for (const MimeName& mime : format.mimeNames) {
            if (isUsed(mime))
                *next++ = {format.type, mime.name, mime.isOffered};
        }
    }
    std::ranges::copy(otherNames, next);
    return all;
}

/// In each type's order of preference for reading, which is the order of offering too.
constexpr auto names = allNames();

/// Targets that ask the owner to do something or to describe the selection (ICCCM 2.6.2 and 2.6.3), and the
/// types INCR and ATOM_PAIR, which carry no content.
constexpr std::array<std::string_view, 9> protocolNames{
    "TARGETS",          "MULTIPLE",        "TIMESTAMP", "SAVE_TARGETS", "DELETE",
    "INSERT_SELECTION", "INSERT_PROPERTY", "INCR",      "ATOM_PAIR",
};

bool isProtocolName(std::string_view name) {
    return std::ranges::find(protocolNames, name) != protocolNames.end();
}

/// A MIME name in lower case, without blanks and quotation marks; every other name unchanged.
std::string normalised(std::string_view target) {
    std::string name(target);
    if (name.find('/') == std::string::npos)
        return name;
    std::erase(name, ' '); // as in "text/plain; charset=UTF-8"
    std::erase(name, '"');
    std::ranges::transform(name, name.begin(), asciiLowerCase);
    return name;
}

} // namespace

std::vector<std::string> offeredFor(const std::string& type) {
    std::vector<std::string> targets;
    for (const Name& name : names) {
        if (name.isOffered && name.type == type)
            targets.emplace_back(name.target);
    }
    if (targets.empty())
        targets.push_back(type);
    return targets;
}

std::vector<std::string> giving(std::string_view type, std::span<const std::string> offered) {
    std::vector<std::string> targets;
    for (const Name& name : names) {
        if (name.type == type)
            std::ranges::copy_if(offered, std::back_inserter(targets),
                                 [&](const auto& one) { return normalised(one) == name.target; });
    }
    // The agent, the tools and programs like them offer other types under the type's own name.
    if (targets.empty())
        std::ranges::copy_if(offered, std::back_inserter(targets),
                             [&](const auto& one) { return one == type && typeOf(one) == type; });
    return targets;
}

std::optional<std::string> typeOf(std::string_view target) {
    if (isProtocolName(target))
        return std::nullopt;
    const std::string name = normalised(target);
    const auto* const found = std::ranges::find(names, name, &Name::target);
    return std::string(found != names.end() ? found->type : target);
}

bool canBeType(std::string_view type) {
    return pasteboardType::isReadableName(type) && type.find('\0') == std::string_view::npos &&
           typeOf(type) == type;
}

} // namespace tavel::targetName
