#pragma once

#include "Platform/ImageCodec.h"
#include "Support/Bytes.h"

#include <optional>

namespace tavel {

/// What the module tavel-images offers: the part of an ImageCodec that takes libraries of many megabytes.
/// Plain functions and not a class with virtual ones, as the module and the program do not share type
/// information. Any thread; none of them throws. They answer as ImageCodec does.
struct ImageModule {
    /// Only for HEIF and AVIF files.
    std::optional<ImageSize> (*measure)(const Bytes& file);
    std::optional<bool> (*hasAlpha)(const Bytes& file);
    std::optional<Bytes> (*encodePng)(const Bytes& file);
    std::optional<Bytes> (*encodeJpeg)(const Bytes& file, double quality);
};

/// The module's only exported function, and its name.
using ImageModuleEntry = const ImageModule* (*)();
inline constexpr const char* imageModuleEntryName = "tavelImageModule";

} // namespace tavel
