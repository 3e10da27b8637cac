#pragma once

#include "Mac/CFRef.h"
#include "Mac/ImageProperties.h"
#include "Support/Bytes.h"

#include <ImageIO/ImageIO.h>

#include <optional>
#include <string>

namespace tavel {

/// An image file, read by ImageIO. An image decodes the file's bytes only when its pixels are needed, so the
/// source must outlive every image that it returns.
class ImageSource {
public:
    /// Shares the file's bytes; nothing is copied.
    explicit ImageSource(const Bytes& file);

    /// The uniform type identifier of the format. nullopt if ImageIO cannot read the format.
    std::optional<std::string> typeIdentifier() const;

    /// The properties of the first image, from its headers. nullopt if there is no image.
    std::optional<ImageProperties> properties() const;

    /// The first image; null if it cannot be decoded.
    CFRef<CGImageRef> image() const;

private:
    Bytes file_; // keeps the buffer of data_ alive
    CFRef<CFDataRef> data_;
    CFRef<CGImageSourceRef> source_; // may be null if the file is no image
};

} // namespace tavel
