#include "Fuzz/Fuzz.h"
#include "Linux/Contents/SelectionText.h"
#include "Linux/Contents/TargetNames.h"
#include "Linux/Contents/UriList.h"
#include "Support/Text.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace tavel {
namespace {

/// Target and type names that owners use for text.
constexpr std::array<std::string_view, 6> textTypes{
    "UTF8_STRING", "STRING", "TEXT", "COMPOUND_TEXT", "text/plain", "text/plain;charset=utf-8",
};

void readAsText(std::string_view bytes) {
    for (const std::string_view target : textTypes) {
        for (const std::string_view type : textTypes) {
            const bool saysUtf8 = type == "UTF8_STRING" || type == "text/plain;charset=utf-8";
            const auto text = plainTextOf({std::string(target), std::string(type), 8, Bytes::copyOf(bytes)});
            require(text || type == "COMPOUND_TEXT");
            require(!text || saysUtf8 || isUtf8(text->view()));
        }
    }
    const Bytes html = htmlOf({"text/html", "text/html", 8, Bytes::copyOf(bytes)});
    require(html.empty() || html.view().back() != '\0');
    if (const auto latin1 = latin1Of(Bytes::copyOf(bytes)))
        require(isUtf8(bytes) && latin1->size() <= bytes.size());
}

using Uris = std::vector<std::string>;

Uris urisIn(void (*visitUris)(std::string_view, const UriVisitor&), std::string_view text) {
    Uris uris;
    visitUris(text, [&](std::string_view uri) {
        uris.emplace_back(uri);
        return true;
    });
    return uris;
}

void readAsFiles(std::string_view bytes) {
    const Uris uris = urisIn(visitUrisInList, bytes);
    require(std::ranges::none_of(uris, [](const auto& uri) { return uri.empty() || uri.starts_with('#'); }));
    require(urisIn(visitUrisInList, uriListOf(uris)) == uris);
    for (const std::string& uri : uris)
        require(withoutOwnHost(uri, "host").size() <= uri.size());
    // The first pass removes headings; the second must find none.
    const Uris files = urisIn(visitUrisInCopiedFiles, bytes);
    require(urisIn(visitUrisInCopiedFiles, copiedFilesOf(files)) == files);
}

void readAsName(std::string_view bytes) {
    const std::string name(bytes);
    const auto type = targetName::typeOf(name);
    if (targetName::canBeType(name))
        require(type == name && targetName::giving(name, {&name, 1}).size() == 1);
    if (type)
        require(targetName::giving(*type, {&name, 1}).size() == 1);
}

} // namespace
} // namespace tavel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    const std::string_view bytes = inputText(data, size);
    readAsText(bytes);
    readAsFiles(bytes);
    readAsName(bytes);
    return 0;
}
