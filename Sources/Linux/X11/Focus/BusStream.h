#pragma once

#include "Linux/X11/Focus/GioPointers.h"

#include <cstddef>
#include <string>

namespace tavel {

/// The largest message that is read from a bus, in bytes. GIO takes messages of up to 128 MiB, and ten times
/// as much memory, which GLib keeps.
inline constexpr std::size_t largestBusMessage = std::size_t{1} << 20;

/// Connects and authenticates as this process's user (D-Bus Specification, "Authentication Protocol", the
/// mechanism EXTERNAL). A GDBusConnection on this stream is closed by a larger message instead of reading it.
/// Null if no bus answers, or when cancelled.
GioPointer<GIOStream> openBusStream(const std::string& address, GCancellable* cancellable);

} // namespace tavel
