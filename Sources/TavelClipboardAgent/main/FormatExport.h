#pragma once

#include "Support/Bytes.h"
#include "TavelClipboardAgent/main/Export.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The representations of one clipboard by the names of their formats.
using CapturedFormats = std::map<std::string_view, Bytes>;

/// An export of one clipboard's representations as files.
struct FormatExport {
    ExportOrigin origin;
    std::shared_ptr<PrivateDirectory> directory;
    std::vector<std::string> paths; // sorted by format name
};

/// The background job: adds a PNG if there is a picture only in other formats, writes one file per
/// representation into a new directory, posts its publication, and frees the slot. After a failure to write,
/// it removes the directory and posts a warning.
void exportFormats(const ExportContext& context, const ExportOrigin& origin, CapturedFormats formats);

} // namespace tavel
