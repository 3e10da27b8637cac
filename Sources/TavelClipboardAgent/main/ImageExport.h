#pragma once

#include "Support/Bytes.h"
#include "TavelClipboardAgent/main/Export.h"

#include <filesystem>
#include <memory>
#include <string>

namespace tavel {

/// A published picture.
struct ImageFile {
    std::shared_ptr<const PrivateDirectory> directory; // null until the file is written
    std::string name;

    std::filesystem::path path() const { return directory->path() / name; }
    void remove() const { static_cast<void>(directory->removeEntry(name)); }
};

/// An export of one copied picture as a PNG file.
struct ImageExport {
    ExportOrigin origin;
    ImageFile file;
};

/// The background job: converts `image`, writes the file, posts its publication, and frees the slot. A
/// picture that cannot be converted or written is dropped without a warning.
void exportImage(const ExportContext& context, ImageExport pending, const Bytes& image);

} // namespace tavel
