#pragma once

#include "Linux/Base/System.h"
#include "Linux/Images/ImageModule.h"
#include "Platform/ImageCodec.h"

#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

namespace tavel {

/// Where the module tavel-images lies: beside the directory of the running program, in ../lib/tavel.
std::filesystem::path imageModulePath();

/// Measures images itself and leaves their conversion to the module tavel-images, which is loaded with the
/// first image that needs it and stays: a process that never converts one never maps the libraries for it.
class OnDemandImageCodec final : public ImageCodec {
public:
    /// Without a module at that path no image can be converted, which is logged once, on any thread.
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
