#pragma once

#include "Tests/Mac/Double/CoreObjects.h"

namespace tavel::doubles {

/// Whether it is a port, and valid, so that it receives messages.
bool isValidPort(CFTypeRef port);

/// Releases the port's sources from the run loop. Main thread.
void removeSourcesOf(const Object& port);

} // namespace tavel::doubles
