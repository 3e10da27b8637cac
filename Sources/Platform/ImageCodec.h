#pragma once

#include "Support/Bytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

struct ImageSize {
    std::int64_t width = 0;  // pixels
    std::int64_t height = 0; // pixels
};

/// Reads and converts images. Any thread. nullopt means that the bytes are not an image that this codec
/// reads; no operation fails in another way.
class ImageCodec {
public:
    virtual ~ImageCodec() = default;

    /// The size of the first image in the file, from its headers: no pixel is decoded.
    virtual std::optional<ImageSize> measure(const Bytes& file) = 0;

    /// The type identifier of the file's format, such as public.png, recognised from its content.
    virtual std::optional<std::string> typeIdentifier(const Bytes& file) = 0;

    /// Whether the first image in the file has an alpha channel.
    virtual std::optional<bool> hasAlpha(const Bytes& file) = 0;

    /// Whether this codec encodes that type, such as public.png.
    virtual bool canEncode(std::string_view typeIdentifier) = 0;

    /// The first image in the file, encoded anew as PNG.
    virtual std::optional<Bytes> encodePng(const Bytes& file) = 0;

    /// The first image in the file, encoded anew as JPEG; `quality` goes from 0 to 1.
    virtual std::optional<Bytes> encodeJpeg(const Bytes& file, double quality) = 0;
};

} // namespace tavel
