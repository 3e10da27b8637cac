#pragma once

#include "Support/Bytes.h"
#include "TavelClipboardAgent/main/Export.h"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The representations of one clipboard by the names of their formats.
using CapturedFormats = std::map<std::string_view, Bytes>;

/// One clipboard's representations on their way to files.
struct FormatExport {
    ExportOrigin origin;
    std::filesystem::path directory;
    std::vector<std::string> paths; // sorted by format name
};

/// The background job: adds a PNG where a picture in another format is there, writes one file per
/// representation into a new directory and posts its publication, then frees the slot. A failure to write is
/// posted as a warning, and leaves nothing behind.
void exportFormats(const ExportContext& context, const ExportOrigin& origin, CapturedFormats formats);

} // namespace tavel
