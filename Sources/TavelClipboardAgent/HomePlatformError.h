#pragma once

#include "Support/Error.h"

namespace tavel {

/// The error as a parent and the system's log see it, on every platform the same: a FileError gets the domain
/// and the codes of the home platform (NSCocoaErrorDomain, Foundation's FoundationErrors.h) and keeps its
/// description. Every other error stays as it is.
Error homePlatformError(const Error& error);

} // namespace tavel
