#pragma once

#include "Support/Error.h"

#include <string>

namespace tavel {

/// The error of a failed system call on the file at `path`, with `code` from errno. Domain and code are those
/// of the home platform's file errors (NSCocoaErrorDomain, Foundation's FoundationErrors.h) on every system,
/// so that whoever gets to see them sees the same everywhere.
Error fileReadError(int code, const std::string& path);
Error fileWriteError(int code, const std::string& path);

} // namespace tavel
