#pragma once

#include "Tests/Mac/Double/CoreObjects.h"

namespace tavel::doubles {

/// Whether it is a port that still receives messages.
bool isValidPort(CFTypeRef port);

/// The run loop lets the sources of the port go. Main thread.
void removeSourcesOf(const Object& port);

} // namespace tavel::doubles
