#pragma once

#include <string>

namespace tavel {

// Descriptions of the files that the agent exports, one line each. They also say if a file cannot be read or
// is gone: the agent deletes files soon after the next copy.

/// "picture, 640 × 480 pixels, 12.3 KiB: /path/file.png"
std::string describePicture(const std::string& path);

/// A file whose name tells its format: "HTML, 345 bytes: /path/text.html". For a picture, the size in pixels
/// too.
std::string describeFormat(const std::string& path);

} // namespace tavel
