#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The file URL of an absolute path (RFC 8089), with an empty host. Bytes other than ASCII letters, digits
/// and !$&'()*+,-./:=@_~ are percent-encoded. The URL of an existing directory ends in a slash.
std::string fileUrlFromPath(const std::string& path);

/// The path that a file URL names, percent-decoded and without a trailing slash; query and fragment are left
/// out. Nothing for another scheme, for another machine's file (a host that is neither empty nor
/// "localhost"), for a path that is not absolute, for a malformed escape, and for a path that holds a zero
/// byte or is not UTF-8.
std::optional<std::string> pathFromFileUrl(std::string_view url);

} // namespace tavel
