#pragma once

#include "Platform/Platform.h"

namespace tavel {

/// Ends this process for whoever waits for it, with status 0, while a copy of it goes on in the background
/// until no other program depends on it: where what is copied lives in the copying program, a command that
/// copies and ends would copy nothing. Does not return. Throws Error when there can be no copy. Must be
/// called while the process has one thread.
[[noreturn]] void serveInBackground(Platform& platform);

} // namespace tavel
