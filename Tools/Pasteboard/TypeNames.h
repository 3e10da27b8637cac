#pragma once

#include <string>
#include <string_view>

namespace tavel {

/// The pasteboard type that a person means by `name`: the identifier behind a short name such as "html", and
/// any other name as it stands, since it may be an identifier itself.
std::string typeIdentifier(std::string_view name);

/// The pasteboard type of a file's content as far as the end of the file's name tells it, in letters of any
/// case: "page.HTM" holds public.html. Text for every other name, that of standard input included.
std::string typeIdentifierForFile(const std::string& file);

/// The short names with their identifiers, one pair a line, for the help text.
std::string typeNameTable();

} // namespace tavel
