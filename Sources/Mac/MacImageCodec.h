#pragma once

#include "Platform/ImageCodec.h"

namespace tavel {

/// ImageIO's decoders and encoders. The decoder is chosen by the file's content; the file is not copied.
class MacImageCodec final : public ImageCodec {
public:
    std::optional<ImageSize> measure(const Bytes& file) override;
    std::optional<std::string> typeIdentifier(const Bytes& file) override;
    std::optional<bool> hasAlpha(const Bytes& file) override;
    bool canEncode(std::string_view typeIdentifier) override;
    std::optional<Bytes> encodePng(const Bytes& file) override;
    std::optional<Bytes> encodeJpeg(const Bytes& file, double quality) override;
};

} // namespace tavel
