#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The file URL of an absolute path (RFC 8089), with an empty host. Bytes other than ASCII letters, digits
/// and !$&'()*+,-./:=@_~ are percent-encoded. The URL of an existing directory ends in a slash.
std::string fileUrlFromPath(const std::string& path);

/// The path that a file URL names, percent-decoded, without trailing slash, query and fragment. nullopt for
/// another scheme, a file of another machine (a host that is neither empty nor "localhost"), a relative path,
/// a malformed escape, and a path that is not UTF-8 or holds a zero byte.
std::optional<std::string> pathFromFileUrl(std::string_view url);

} // namespace tavel
