#include "Fuzz/Fuzz.h"
#include "Support/FileUrl.h"
#include "Support/Text.h"

#include <string>

namespace tavel {
namespace {

void checkRoundTrip(std::string path) {
    const auto back = pathFromFileUrl(fileUrlFromPath(path));
    const bool isPath = path.find('\0') == std::string::npos && isUtf8(path);
    require(back.has_value() == isPath);
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    require(!back || *back == path);
}

} // namespace
} // namespace tavel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    const std::string_view text = inputText(data, size);
    // Below a missing directory no path names an existing directory, whose URL would end with a slash.
    checkRoundTrip("/no-such-directory-of-any-machine/" + std::string(text));

    const auto path = pathFromFileUrl(text);
    if (!path)
        return 0;
    require(path->starts_with('/') && (path->size() == 1 || !path->ends_with('/')));
    require(path->find('\0') == std::string::npos && isUtf8(*path));
    checkRoundTrip(*path);
    return 0;
}
