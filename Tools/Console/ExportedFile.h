#pragma once

#include <string>

namespace tavel {

// One-line descriptions of the files that the agent exports. The line also says if a file is unreadable or
// already gone, because the agent deletes exported files soon after the next copy.

/// "picture, 640 × 480 pixels, 12.3 KiB: /path/file.png"
std::string describePicture(const std::string& path);

/// "HTML, 345 bytes: /path/text.html". The file's name determines the format. A picture's line also has the
/// size in pixels.
std::string describeFormat(const std::string& path);

} // namespace tavel
