#pragma once

#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/main/Export.h"
#include "TavelClipboardAgent/main/ExportSlot.h"
#include "TavelClipboardAgent/main/FormatExport.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

/// A content that is being captured: what one step of the capture leaves to the next. It goes away with the
/// capture, however this ends, and frees the export slot then, unless an export has taken it over.
struct Capture {
    Capture(ExportOrigin contentOrigin, std::vector<std::string> offeredTypes,
            std::shared_ptr<ExportSlot> exportSlot)
        : origin(std::move(contentOrigin)), types(std::move(offeredTypes)), slot(std::move(exportSlot)) {}

    ExportOrigin origin;
    std::vector<std::string> types;
    ExportLease slot;

    // While the formats are gathered:
    std::size_t nextFormat = 0; // in the catalogue
    std::size_t room = maximumFormatsBytes;
    CapturedFormats formats;

    std::vector<std::string_view> pictureTypes; // of the plain picture, those that were not gathered yet
};

} // namespace tavel
