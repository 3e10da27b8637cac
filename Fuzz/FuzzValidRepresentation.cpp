#include "Fuzz/Fuzz.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/Formats/ValidRepresentation.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    if (size == 0)
        return 0;
    const std::string name(clipboardFormats.at(data[0] % clipboardFormats.size()).name);
    const std::string_view content = inputText(data + 1, size - 1);
    const bool isValid = validRepresentation(name, content);
    require(!isValid || !content.empty());
    require(!validRepresentation(name + "x", content));

    if (name == "text.html" || name == "text.txt")
        require(validRepresentation("text.html", content) == validRepresentation("text.txt", content));
    else if (isValid) // the other formats accept trailing ASCII
        require(validRepresentation(name, std::string(content) + "x"));
    return 0;
}
