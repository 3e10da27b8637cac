#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>

namespace tavel {

/// The file URL of an absolute path, as the system writes it: accents in names are decomposed, whatever form
/// they have in the path, and the URL of an existing directory ends in a slash. nullopt if the path is not
/// UTF-8.
std::optional<std::string> fileUrlOfPath(const std::string& path);

/// The path that a file URL names, without a trailing slash. A file reference URL, which names the file by a
/// number, works while the file exists. nullopt for any other URL, for a file of another machine, and for a
/// path that contains a zero character or is not UTF-8.
std::optional<std::string> pathOfFileUrl(NSURL* url);

} // namespace tavel
