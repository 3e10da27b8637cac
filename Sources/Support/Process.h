#pragma once

#include <cstdint>

namespace tavel {

/// The current parent's process identifier. The system gives an orphan another parent (POSIX getppid), so a
/// change means that the original parent has ended.
std::int32_t parentProcessIdentifier();

/// Sets this process's nice value to 10. On Linux each thread has its own nice value and passes it on to the
/// threads that it starts, so this must be called before any other thread starts.
void lowerSchedulingPriority();

/// Opens the null device on each closed descriptor from 0 to 2. Otherwise the next file that is opened, such
/// as the pasteboard store, would become standard input or output.
void reserveStandardDescriptors();

/// Sets the limit of core dumps (RLIMIT_CORE) to 0, for good, for this process and those that it starts: a
/// dump would hold what was copied. The process stays open to debuggers and /proc.
void disableCoreDumps();

} // namespace tavel
