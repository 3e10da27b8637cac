#pragma once

#include "Support/Error.h"

namespace tavel {

/// The error as the parent and the system's log see it, the same on every platform. A FileError gets the
/// domain and code of the home platform (NSCocoaErrorDomain, Foundation's FoundationErrors.h) and keeps its
/// description. Any other error is returned unchanged.
Error homePlatformError(const Error& error);

} // namespace tavel
