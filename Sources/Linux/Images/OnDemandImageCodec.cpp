#include "Linux/Images/OnDemandImageCodec.h"

#include "ImageHeaders/ImageHeader.h"
#include "Linux/Base/Modules.h"
#include "Linux/Images/HeifBrand.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace tavel {

std::filesystem::path imageModulePath() {
    return modulePath("tavel-images");
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

std::optional<bool> OnDemandImageCodec::hasAlpha(const Bytes& file) {
    const ImageModule* const module = moduleFor(file);
    return module == nullptr ? std::nullopt : module->hasAlpha(file);
}

bool OnDemandImageCodec::canEncode(std::string_view typeIdentifier) {
    return (typeIdentifier == "public.png" || typeIdentifier == "public.jpeg") && module() != nullptr;
}

std::optional<Bytes> OnDemandImageCodec::encodePng(const Bytes& file) {
    const ImageModule* const module = moduleFor(file);
    return module == nullptr ? std::nullopt : module->encodePng(file);
}

std::optional<Bytes> OnDemandImageCodec::encodeJpeg(const Bytes& file, double quality) {
    const ImageModule* const module = moduleFor(file);
    return module == nullptr ? std::nullopt : module->encodeJpeg(file, quality);
}

const ImageModule* OnDemandImageCodec::moduleFor(const Bytes& file) {
    const bool isImage = readImageHeader(file.view()) || heifTypeIdentifier(file.view());
    return isImage ? module() : nullptr;
}

const ImageModule* OnDemandImageCodec::module() {
    std::call_once(loading_, [this] { loadModule(); });
    return module_;
}

void OnDemandImageCodec::loadModule() {
    try {
        module_ = reinterpret_cast<ImageModuleEntry>(loadModuleEntry(path_, imageModuleEntryName))();
    } catch (const std::runtime_error& error) {
        log_(std::string("Images cannot be converted: ") + error.what());
    }
}

} // namespace tavel
