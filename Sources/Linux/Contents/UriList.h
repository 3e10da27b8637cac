#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace tavel {

/// The URLs as text/uri-list (RFC 2483, section 5): one URL to a line, each line ended by CR and LF.
std::string uriListOf(std::span<const std::string> urls);

/// The URLs in the format of x-special/gnome-copied-files and its variants: the word "copy" and the URLs,
/// each on a line. The last line has no line feed, which some file managers would take for a file without a
/// name.
std::string copiedFilesOf(std::span<const std::string> urls);

/// Visits a URI of a list. False ends the visits.
using UriVisitor = std::function<bool(std::string_view uri)>;

/// Visits the URIs in a text/uri-list in their order, without its comments. Accepts any line ends, and zero
/// bytes at the end.
void visitUrisInList(std::string_view list, const UriVisitor& visit);

/// Visits the URIs in the format of x-special/gnome-copied-files and its variants, for copied and for cut
/// files.
void visitUrisInCopiedFiles(std::string_view text, const UriVisitor& visit);

/// Removes the host from a file URL that names this machine, as some programs write URLs of local files (RFC
/// 8089, 2). Returns any other URI unchanged.
std::string withoutOwnHost(std::string_view uri, std::string_view hostName);

} // namespace tavel
