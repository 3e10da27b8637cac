#pragma once

#include <string>

namespace tavel {

// The files that the agent makes of what somebody copied, in words, each on one line. A file that is gone, as
// it is soon after the next copy, or that cannot be read, is told as that.

/// "picture, 640 × 480 pixels, 12.3 KiB: /path/file.png"
std::string describePicture(const std::string& path);

/// One file of a format set, whose name tells the format: "HTML, 345 bytes: /path/text.html", and of pictures
/// the number of pixels, too.
std::string describeFormat(const std::string& path);

} // namespace tavel
