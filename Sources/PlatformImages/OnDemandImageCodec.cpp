#include "PlatformImages/OnDemandImageCodec.h"

#include "PlatformImages/HeifBrand.h"
#include "Support/ImageHeader.h"

#include <dlfcn.h>

#include <system_error>
#include <utility>

namespace tavel {

std::filesystem::path imageModulePath() {
    // Not left to the program's RUNPATH: sanitizers call dlopen in its stead, and theirs is another one.
    std::error_code ignored;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return program.parent_path().parent_path() / "lib" / "tavel" / "tavel-images.so";
}

OnDemandImageCodec::OnDemandImageCodec(Log log, std::filesystem::path module)
    : log_(std::move(log)), path_(std::move(module)) {}

std::optional<ImageSize> OnDemandImageCodec::measure(const Bytes& file) {
    if (const auto header = readImageHeader(file.view()))
        return ImageSize{header->width, header->height};
    if (!heifTypeIdentifier(file.view()) || module() == nullptr)
        return std::nullopt;
    return module()->measure(file);
}

std::optional<std::string> OnDemandImageCodec::typeIdentifier(const Bytes& file) {
    if (const auto header = readImageHeader(file.view()))
        return std::string(header->typeIdentifier);
    const auto heif = heifTypeIdentifier(file.view());
    if (!heif || !measure(file))
        return std::nullopt;
    return std::string(*heif);
}

std::optional<Bytes> OnDemandImageCodec::encodePng(const Bytes& file) {
    const auto header = readImageHeader(file.view());
    if (header && header->typeIdentifier == "public.png")
        return file;
    if ((!header && !heifTypeIdentifier(file.view())) || module() == nullptr)
        return std::nullopt;
    return module()->encodePng(file);
}

std::optional<Bytes> OnDemandImageCodec::encodeJpeg(const Bytes& file, double quality) {
    const bool isImage = readImageHeader(file.view()) || heifTypeIdentifier(file.view());
    if (!isImage || module() == nullptr)
        return std::nullopt;
    return module()->encodeJpeg(file, quality);
}

const ImageModule* OnDemandImageCodec::module() {
    std::call_once(loading_, [this] { loadModule(); });
    return module_;
}

void OnDemandImageCodec::loadModule() {
    // Never unloaded: GLib's types, which its libraries register, cannot be taken back.
    void* const library = dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const entry = library == nullptr ? nullptr : dlsym(library, imageModuleEntryName);
    if (entry != nullptr)
        module_ = reinterpret_cast<ImageModuleEntry>(entry)();
    if (module_ == nullptr) {
        const char* const reason = dlerror(); // NOLINT(concurrency-mt-unsafe): it is kept for each thread
        log_("Images cannot be converted: " + (reason == nullptr ? path_.string() : std::string(reason)));
    }
}

} // namespace tavel
