#pragma once

#include "Support/Bytes.h"
#include "TavelClipboardAgent/main/Export.h"

#include <filesystem>

namespace tavel {

/// One copied picture on its way to a PNG file.
struct ImageExport {
    ExportOrigin origin;
    std::filesystem::path file;
};

/// The background job: converts `image`, writes the file and posts its publication, then frees the slot. A
/// picture that cannot be converted or written is given up without a word.
void exportImage(const ExportContext& context, const ImageExport& pending, const Bytes& image);

} // namespace tavel
