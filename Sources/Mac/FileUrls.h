#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>

namespace tavel {

/// The file URL of an absolute path, as the system writes it: the names in the file system's own form, a
/// slash behind an existing directory. Nothing if the path is not UTF-8.
std::optional<std::string> fileUrlOfPath(const std::string& path);

/// The path that a file URL names, without a slash at its end; also of one that names the file by its number,
/// if that file is still there. Nothing for any other URL, for another machine's file, and for a path that
/// holds a zero character or is not UTF-8.
std::optional<std::string> pathOfFileUrl(NSURL* url);

} // namespace tavel
