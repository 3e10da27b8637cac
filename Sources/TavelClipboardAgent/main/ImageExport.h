#pragma once

#include "Support/Bytes.h"
#include "TavelClipboardAgent/main/Export.h"

#include <filesystem>

namespace tavel {

/// An export of one copied picture as a PNG file.
struct ImageExport {
    ExportOrigin origin;
    std::filesystem::path file;
};

/// The background job: converts `image`, writes the file, posts its publication, and frees the slot. A
/// picture that cannot be converted or written is dropped without a warning.
void exportImage(const ExportContext& context, const ImageExport& pending, const Bytes& image);

} // namespace tavel
