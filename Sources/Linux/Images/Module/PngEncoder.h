#pragma once

#include "Linux/Images/Module/PlainPixels.h"
#include "Support/Bytes.h"

#include <optional>

namespace tavel {

/// Encodes as PNG, quickly rather than small. An image that may have few colours is searched for them and
/// becomes an indexed one if it has; that takes its pixels to be in memory twice. Nothing if a part of the
/// image cannot be decoded. Throws std::bad_alloc.
std::optional<Bytes> encodeAsPng(const PlainPixels& pixels, bool mayHaveFewColours);

} // namespace tavel
