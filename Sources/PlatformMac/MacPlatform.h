#pragma once

#include "Platform/Platform.h"

#include <memory>

namespace tavel {

/// The platform of macOS. Main thread.
std::unique_ptr<Platform> makeMacPlatform();

} // namespace tavel
