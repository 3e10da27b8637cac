#pragma once

#include "Mac/CFRef.h"
#include "Mac/ImageProperties.h"
#include "Support/Bytes.h"

#include <ImageIO/ImageIO.h>

#include <optional>
#include <string>

namespace tavel {

/// A file as ImageIO sees it. Decoding is put off until somebody wants pixels, so the source must outlive
/// every image that it makes.
class ImageSource {
public:
    /// Shares the file's bytes.
    explicit ImageSource(const Bytes& file);

    /// The type identifier of the format. Nothing if it is none that can be read.
    std::optional<std::string> typeIdentifier() const;

    /// Of the first image, from its headers. Nothing if there is none.
    std::optional<ImageProperties> properties() const;

    /// The first image; null if it cannot be decoded.
    CFRef<CGImageRef> image() const;

private:
    Bytes file_; // kept alive for data_
    CFRef<CFDataRef> data_;
    CFRef<CGImageSourceRef> source_; // null for some of what is no image
};

} // namespace tavel
