#include "Linux/Base/TemporaryDirectory.h"

#include <cstdlib>

namespace tavel {

std::filesystem::path userTemporaryDirectory() {
    // POSIX, "Environment Variables": TMPDIR names the place. A relative one would depend on the working
    // directory, and the parent is sent absolute paths.
    const char* const named = std::getenv("TMPDIR");
    if (named != nullptr && named[0] == '/')
        return named;
    return "/tmp";
}

} // namespace tavel
