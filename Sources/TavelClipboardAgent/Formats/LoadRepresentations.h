#pragma once

#include "Platform/Pasteboard.h"

#include <span>
#include <string>
#include <vector>

namespace tavel {

/// Reads the files at `paths`, each of which holds one representation and is named by its format. Returns
/// their pasteboard types with their content, in the order of the paths. HTML without a byte-order mark gets
/// one, from which its readers know that it is UTF-8. All files together may hold `maximumFormatsBytes`; none
/// is read past that.
///
/// The first unacceptable file throws Error in the domain "ClipboardFormats". Code 1: there is no path, or
/// there are more paths than formats. Code 2: the file has a wrong or repeated name, a wrong kind or size, or
/// cannot be opened. Code 3: its content is wrong. A failure while reading or closing throws the system's
/// error.
std::vector<Representation> loadRepresentations(std::span<const std::string> paths);

} // namespace tavel
