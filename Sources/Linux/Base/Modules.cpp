#include "Linux/Base/Modules.h"

#include <dlfcn.h>

#include <array>
#include <stdexcept>
#include <string>
#include <system_error>

namespace tavel {

namespace {

/// Seen from the program's directory: those of an installed agent, of installed tools, and of a build's
/// programs.
constexpr std::array modulePlaces{TAVEL_MODULES_FROM_AGENT, TAVEL_MODULES_FROM_TOOLS, "../lib/tavel"};

} // namespace

std::filesystem::path moduleDirectory() {
    // The program's RUNPATH would not do: under a sanitizer, the runtime calls dlopen and its own RUNPATH
    // applies.
    std::error_code ignored;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    std::filesystem::path directory;
    for (const std::filesystem::path place : modulePlaces) {
        directory = (program.parent_path() / place).lexically_normal();
        if (std::filesystem::is_directory(directory, ignored))
            break;
    }
    return directory;
}

void requireAbsolute(const std::filesystem::path& path) {
    if (!path.is_absolute())
        throw std::runtime_error(path.string() + ": not an absolute path (is there no /proc?)");
}

std::filesystem::path modulePath(std::string_view name) {
    return moduleDirectory() / (std::string(name) + ".so");
}

void* loadModuleEntry(const std::filesystem::path& module, const char* entryName) {
    requireAbsolute(module);
    // Never unloaded: GLib cannot unregister the types that the module's libraries registered.
    void* const library = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const entry = library == nullptr ? nullptr : dlsym(library, entryName);
    if (entry == nullptr) {
        const char* const reason = dlerror(); // NOLINT(concurrency-mt-unsafe): per-thread state
        throw std::runtime_error(reason == nullptr ? module.string() : std::string(reason));
    }
    return entry;
}

} // namespace tavel
