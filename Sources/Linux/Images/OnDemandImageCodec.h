#pragma once

#include "Linux/Base/System.h"
#include "Linux/Images/ImageModule.h"
#include "Platform/ImageCodec.h"

#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

namespace tavel {

/// The path of the module tavel-images, in the directory of our modules.
std::filesystem::path imageModulePath();

/// Measures images itself and converts them with the module tavel-images. The first image that needs the
/// module loads it, and it stays loaded. So a process that converts no image never maps the image libraries.
/// Any thread.
class OnDemandImageCodec final : public ImageCodec {
public:
    /// Without a module at that path no image can be converted. The reason is then logged once, on the thread
    /// of the first call that needed the module.
    explicit OnDemandImageCodec(Log log, std::filesystem::path module = imageModulePath());

    std::optional<ImageSize> measure(const Bytes& file) override;
    std::optional<std::string> typeIdentifier(const Bytes& file) override;
    std::optional<bool> hasAlpha(const Bytes& file) override;
    bool canEncode(std::string_view typeIdentifier) override;
    std::optional<Bytes> encodePng(const Bytes& file) override;
    std::optional<Bytes> encodeJpeg(const Bytes& file, double quality) override;

private:
    const ImageModule* module();
    const ImageModule* moduleFor(const Bytes& file);
    void loadModule();

    Log log_;
    std::filesystem::path path_;
    std::once_flag loading_;
    const ImageModule* module_ = nullptr; // written under loading_
};

} // namespace tavel
