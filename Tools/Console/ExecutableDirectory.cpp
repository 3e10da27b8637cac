#include "Console/ExecutableDirectory.h"

#include "Support/Error.h"

#include <glib.h>

#include <memory>
#include <system_error>

namespace tavel {

std::filesystem::path executableDirectory(const std::string& programName) {
    std::error_code error;
    // Linux tells it; elsewhere the name has to do, which shells look up along PATH.
    const std::filesystem::path told = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error)
        return told.parent_path();
    const std::unique_ptr<gchar, decltype(&g_free)> found(g_find_program_in_path(programName.c_str()),
                                                          g_free);
    if (found != nullptr) {
        const std::filesystem::path path = std::filesystem::canonical(found.get(), error);
        if (!error)
            return path.parent_path();
    }
    throw Error("Tavel", 1, "The directory of this program cannot be found; use --agent.");
}

} // namespace tavel
