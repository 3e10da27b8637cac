#pragma once

#include <string>
#include <string_view>

namespace tavel {

/// The type identifier for a short name such as "html". Any other name is returned as it is, because it may
/// be an identifier itself.
std::string typeIdentifier(std::string_view name);

/// The type identifier for a file name's extension, in any case: public.html for "page.HTM". Text for every
/// other name, including that of standard input.
std::string typeIdentifierForFile(const std::string& file);

/// The short names with their identifiers, one pair a line, for the help text.
std::string typeNameTable();

} // namespace tavel
