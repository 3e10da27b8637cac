#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The URLs as text/uri-list (RFC 2483, section 5): one URL to a line, each line ended by CR and LF.
std::string uriListOf(std::span<const std::string> urls);

/// The URLs in the format of x-special/gnome-copied-files and its variants: the word "copy" and the URLs,
/// each on a line. The last line has no line feed, which some file managers would take for a file without a
/// name.
std::string copiedFilesOf(std::span<const std::string> urls);

/// The URIs in a text/uri-list without its comments. Accepts any line ends, and zero bytes at the end.
std::vector<std::string> urisInList(std::string_view list);

/// The URIs in the format of x-special/gnome-copied-files and its variants, for copied and for cut files.
std::vector<std::string> urisInCopiedFiles(std::string_view text);

/// Removes the host from a file URL that names this machine, as some programs write URLs of local files (RFC
/// 8089, 2). Returns any other URI unchanged.
std::string withoutOwnHost(std::string_view uri, std::string_view hostName);

} // namespace tavel
