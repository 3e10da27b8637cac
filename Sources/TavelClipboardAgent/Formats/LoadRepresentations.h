#pragma once

#include "Platform/Pasteboard.h"

#include <span>
#include <string>
#include <vector>

namespace tavel {

/// Reads the files at `paths`, each of which holds one representation and is named by its format, and gives
/// their pasteboard types with their content, in the order of the paths. HTML is given the byte-order mark
/// that makes its readers take it for UTF-8. Together they may hold `maximumFormatsBytes`; no file is read
/// past that.
///
/// The first file that does not fit throws Error in the domain "ClipboardFormats": code 1 when there is no
/// path or more paths than formats, 2 for a file with a wrong name, a name that came before, of a wrong kind
/// or size, or that cannot be opened, 3 for wrong content. A failure while reading throws the system's error.
std::vector<Representation> loadRepresentations(std::span<const std::string> paths);

} // namespace tavel
