#pragma once

#include "Platform/ImageCodec.h"
#include "Support/Bytes.h"

#include <optional>

namespace tavel {

/// Interface of the module tavel-images: the part of an ImageCodec that needs libraries of many megabytes. It
/// consists of plain functions rather than virtual ones, because the module and the program do not share type
/// information. Each returns what ImageCodec's function of that name returns. Any thread; no function throws.
struct ImageModule {
    /// For HEIF and AVIF files only.
    std::optional<ImageSize> (*measure)(const Bytes& file);
    std::optional<bool> (*hasAlpha)(const Bytes& file);
    std::optional<Bytes> (*encodePng)(const Bytes& file);
    std::optional<Bytes> (*encodeJpeg)(const Bytes& file, double quality);
};

/// The module's only exported function and its name.
using ImageModuleEntry = const ImageModule* (*)();
inline constexpr const char* imageModuleEntryName = "tavelImageModule";

} // namespace tavel
