#pragma once

#include <cstdint>

namespace tavel {

/// The identifier of this process's parent at this moment. An orphan's parent is another process (POSIX
/// getppid), so a change means that the original parent has ended.
std::int32_t parentProcessIdentifier();

/// Lowers this process's scheduling priority to the nice value 10. On Linux a nice value belongs to a thread
/// and is inherited: call it before any other thread starts.
void lowerSchedulingPriority();

/// Opens the null device on each of the descriptors 0 to 2 that is closed. Otherwise the next file to be
/// opened, the pasteboard store for one, would take the number and be read as commands or written as output.
void reserveStandardDescriptors();

} // namespace tavel
