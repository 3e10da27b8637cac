#include "PlatformHeadless/TemporaryDirectory.h"

#include <unistd.h>

#include <string>

namespace tavel {

std::filesystem::path userTemporaryDirectory() {
    // confstr(3): gives the size it needs, the terminator included, and 0 when it has no answer. The answer
    // starts with a symbolic link; it stays unresolved, as other programs name the directory that way too.
    const std::size_t size = confstr(_CS_DARWIN_USER_TEMP_DIR, nullptr, 0);
    if (size > 1) {
        std::string directory(size, '\0');
        if (confstr(_CS_DARWIN_USER_TEMP_DIR, directory.data(), size) == size) {
            directory.pop_back();
            return directory;
        }
    }
    return "/tmp";
}

} // namespace tavel
