#include "Linux/Base/Module.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>
#include <system_error>

namespace tavel {

std::filesystem::path moduleDirectory() {
    // Not left to the program's RUNPATH: sanitizers call dlopen in its stead, and theirs is another one.
    std::error_code ignored;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return program.parent_path().parent_path() / "lib" / "tavel";
}

std::filesystem::path modulePath(std::string_view name) {
    return moduleDirectory() / (std::string(name) + ".so");
}

void* loadModuleEntry(const std::filesystem::path& module, const char* entryName) {
    // Never unloaded: GLib's types, which its libraries register, cannot be taken back.
    void* const library = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const entry = library == nullptr ? nullptr : dlsym(library, entryName);
    if (entry == nullptr) {
        const char* const reason = dlerror(); // NOLINT(concurrency-mt-unsafe): it is kept for each thread
        throw std::runtime_error(reason == nullptr ? module.string() : std::string(reason));
    }
    return entry;
}

} // namespace tavel
