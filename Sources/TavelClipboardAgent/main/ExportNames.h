#pragma once

#include <string>
#include <string_view>

namespace tavel::exportNames {

// The names of what an agent makes in the directory for temporary files. They also tell an agent's left-overs
// from what other programs put there.

/// A name for an export directory.
std::string newDirectory();

/// Names for what is in it: a directory of formats, one of a generated file, a picture.
std::string newFormats();
std::string newPaste();
std::string newPicture();

bool isDirectory(std::string_view name);

/// Whether an agent gives such a name to something in its export directory.
bool isExport(std::string_view name);

} // namespace tavel::exportNames
