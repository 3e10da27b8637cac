#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// Names of generated files, which are valid on all common file systems and operating systems.
namespace tavel {

/// The file's full name: the stem without white space at its ends, a dot, and the extension. nullopt if the
/// stem is not UTF-8, the name is not valid everywhere, or no generated file has that extension.
std::optional<std::string> validName(std::string_view stem, std::string_view ext);

/// The valid name, if common file systems can hold it: they limit its bytes.
std::optional<std::string> storableName(std::string_view stem, std::string_view ext);

/// A stem of a storable name to propose: the beginning of a text's first line; without one, the kind of the
/// content and `timestamp`, which is called only then.
std::string suggestion(std::string_view data, std::string_view ext,
                       const std::function<std::string()>& timestamp);

} // namespace tavel
