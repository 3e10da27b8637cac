#pragma once

#include "Platform/ImageCodec.h"

namespace tavel {

/// ImageIO's decoders and encoders. The decoder is chosen by the file's content; the file is not copied.
class MacImageCodec final : public ImageCodec {
public:
    /// From macOS 14.2 on, ImageIO decodes from now on only the formats that the agent needs, in the whole
    /// process: anybody may copy a file for one of its many other decoders.
    MacImageCodec();

    std::optional<ImageSize> measure(const Bytes& file) override;
    std::optional<std::string> typeIdentifier(const Bytes& file) override;
    std::optional<bool> hasAlpha(const Bytes& file) override;
    bool canEncode(std::string_view typeIdentifier) override;
    std::optional<Bytes> encodePng(const Bytes& file) override;
    std::optional<Bytes> encodeJpeg(const Bytes& file, double quality) override;
};

} // namespace tavel
