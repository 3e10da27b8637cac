#pragma once

#include "Platform/Platform.h"

namespace tavel {

/// Forks: this process exits with status 0, and the child serves the copied content in the background until
/// the platform needs it no longer. Without the child, content that lives in the copying program would be
/// lost when the command ends. Does not return. Throws Error if the fork fails. The process must have only
/// one thread.
[[noreturn]] void serveInBackground(Platform& platform);

} // namespace tavel
