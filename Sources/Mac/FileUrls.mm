#include "Mac/FileUrls.h"

#include "Mac/RaisedExceptions.h"
#include "Mac/Strings.h"
#include "Support/FileUrl.h"

namespace tavel {

std::optional<std::string> fileUrlOfPath(const std::string& path) {
    return unlessRaised(std::optional<std::string>(), [&]() -> std::optional<std::string> {
        NSString* const string = stringFromUtf8(path);
        if (string == nil)
            return std::nullopt;
        return utf8FromString([[NSURL fileURLWithPath:string] absoluteString]);
    });
}

std::optional<std::string> pathOfFileUrl(NSURL* url) {
    // Parsed by our own code: NSURL's path ends at a zero character and does not tell another machine's file.
    const auto text = utf8FromString([[url filePathURL] absoluteString]);
    return text ? pathFromFileUrl(*text) : std::nullopt;
}

} // namespace tavel
