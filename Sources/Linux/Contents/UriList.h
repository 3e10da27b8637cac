#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The URLs as text/uri-list (RFC 2483, section 5): one a line, each line ended by CR and LF.
std::string uriListOf(std::span<const std::string> urls);

/// The URLs as file managers offer copied files (x-special/gnome-copied-files and its siblings): the word
/// "copy" and the URLs, one a line. No line feed ends it: some file managers would take it for a nameless
/// file.
std::string copiedFilesOf(std::span<const std::string> urls);

/// The URIs in a text/uri-list, comments left out. Lines may end in any way, and the list in zero bytes.
std::vector<std::string> urisInList(std::string_view list);

/// The URIs in what file managers offer as copied or cut files.
std::vector<std::string> urisInCopiedFiles(std::string_view text);

/// The URL with an empty host if its host is this machine's name: so this machine's files are named by some
/// programs (RFC 8089, 2). Every other URI as it is.
std::string withoutOwnHost(std::string_view uri, std::string_view hostName);

} // namespace tavel
