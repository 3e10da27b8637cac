#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// The names that generated files may have: such as every usual file system and system takes.
namespace tavel {

/// The file's full name: the stem, white space around it left out, a dot, and the extension. Nothing if the
/// name could not be used everywhere. `stem` is UTF-8.
std::optional<std::string> validName(std::string_view stem, std::string_view ext);

/// A stem to propose: the beginning of a text's first line, or what kind of content it is and `timestamp`,
/// which is only called then. Always a valid one.
std::string suggestion(std::string_view data, std::string_view ext,
                       const std::function<std::string()>& timestamp);

} // namespace tavel
