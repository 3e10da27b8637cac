#include "Pasteboard/TypeNames.h"

#include "Platform/PasteboardTypes.h"

#include <algorithm>
#include <array>

namespace tavel {

namespace {

struct TypeName {
    std::string_view name;
    std::string_view identifier;
};

constexpr std::array typeNames{
    TypeName{"text", pasteboardType::string},
    TypeName{"html", "public.html"},
    TypeName{"rtf", "public.rtf"},
    TypeName{"png", pasteboardType::png},
    TypeName{"tiff", pasteboardType::tiff},
    TypeName{"jpeg", "public.jpeg"},
    TypeName{"gif", "com.compuserve.gif"},
    TypeName{"pdf", "com.adobe.pdf"},
    TypeName{"svg", "public.svg-image"},
    TypeName{"webp", "org.webmproject.webp"},
    TypeName{"file-url", pasteboardType::fileUrl},
};

constexpr std::size_t nameColumnWidth = 10;

} // namespace

std::string typeIdentifier(std::string_view name) {
    const auto* const found = std::ranges::find(typeNames, name, &TypeName::name);
    return std::string(found != typeNames.end() ? found->identifier : name);
}

std::string typeNameTable() {
    std::string table;
    for (const TypeName& one : typeNames) {
        table.append("  ").append(one.name).append(nameColumnWidth - one.name.size(), ' ');
        table.append(one.identifier).append("\n");
    }
    return table;
}

} // namespace tavel
