#include "Linux/Contents/TargetNames.h"

#include "Platform/PasteboardTypes.h"
#include "Support/Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <limits>

namespace tavel::targetName {

namespace {

struct Name {
    std::string_view type;
    std::string_view target;
    bool isOffered; // or only read
};

/// In each type's order of preference for reading, which is the order of offering too.
constexpr std::array names{
    Name{pasteboardType::string, utf8String, true},
    Name{pasteboardType::string, "text/plain;charset=utf-8", true},
    Name{pasteboardType::string, "text/plain;charset=utf8", false},
    Name{pasteboardType::string, "text/plain", true},
    Name{pasteboardType::string, latin1String, true},
    Name{pasteboardType::string, anyText, true},
    Name{pasteboardType::string, compoundText, false},
    Name{"public.html", "text/html", true},
    Name{"public.html", "text/html;charset=utf-8", false},
    Name{"public.rtf", "text/rtf", true},
    Name{"public.rtf", "application/rtf", true},
    Name{"public.rtf", "text/richtext", true},
    Name{"com.adobe.pdf", "application/pdf", true},
    Name{pasteboardType::png, "image/png", true},
    Name{pasteboardType::tiff, "image/tiff", true},
    Name{"public.jpeg", "image/jpeg", true},
    Name{"com.compuserve.gif", "image/gif", true},
    Name{"public.svg-image", "image/svg+xml", true},
    Name{"org.webmproject.webp", "image/webp", true},
    Name{pasteboardType::fileUrl, uriList, true},
    Name{pasteboardType::fileUrl, gnomeCopiedFiles, true},
    Name{pasteboardType::fileUrl, mateCopiedFiles, true},
    Name{pasteboardType::fileUrl, nautilusClipboard, false},
};

/// Targets that ask something of the owner, or about it (ICCCM 2.6.2 and 2.6.3), and the type that stands for
/// a transfer in steps.
constexpr std::array<std::string_view, 9> protocolNames{
    "TARGETS",          "MULTIPLE",        "TIMESTAMP", "SAVE_TARGETS", "DELETE",
    "INSERT_SELECTION", "INSERT_PROPERTY", "INCR",      "ATOM_PAIR",
};

bool isProtocolName(std::string_view name) {
    return std::ranges::find(protocolNames, name) != protocolNames.end();
}

/// A MIME name in the form of the table; every other name as it is.
std::string normalised(std::string_view target) {
    std::string name(target);
    if (name.find('/') == std::string::npos)
        return name;
    std::erase(name, ' '); // "text/plain; charset=UTF-8" is the same
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
    // A program of our kind offers what is in no table under the type's own name.
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
    return !type.empty() && type.size() <= std::numeric_limits<std::uint16_t>::max() &&
           type.find('\0') == std::string_view::npos && typeOf(type) == type;
}

} // namespace tavel::targetName
