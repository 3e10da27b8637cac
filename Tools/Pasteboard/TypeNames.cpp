#include "Pasteboard/TypeNames.h"

#include "Platform/PasteboardTypes.h"
#include "Support/Text.h"

#include <algorithm>
#include <array>
#include <filesystem>

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

struct FileNameEnding {
    std::string_view ending;
    std::string_view typeName;
};

constexpr std::array fileNameEndings{
    FileNameEnding{".html", "html"}, FileNameEnding{".htm", "html"},  FileNameEnding{".rtf", "rtf"},
    FileNameEnding{".png", "png"},   FileNameEnding{".tiff", "tiff"}, FileNameEnding{".tif", "tiff"},
    FileNameEnding{".jpeg", "jpeg"}, FileNameEnding{".jpg", "jpeg"},  FileNameEnding{".gif", "gif"},
    FileNameEnding{".pdf", "pdf"},   FileNameEnding{".svg", "svg"},   FileNameEnding{".webp", "webp"},
};

constexpr std::size_t nameColumnWidth = 10;

} // namespace

std::string typeIdentifier(std::string_view name) {
    const auto* const found = std::ranges::find(typeNames, name, &TypeName::name);
    return std::string(found != typeNames.end() ? found->identifier : name);
}

std::string typeIdentifierForFile(const std::string& file) {
    std::string ending = std::filesystem::path(file).extension().string();
    std::ranges::transform(ending, ending.begin(), asciiLowerCase);
    const auto* const found = std::ranges::find(fileNameEndings, ending, &FileNameEnding::ending);
    return typeIdentifier(found != fileNameEndings.end() ? found->typeName : "text");
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
