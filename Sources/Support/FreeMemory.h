#pragma once

#include <cstdint>

namespace tavel {

/// Makes all threads share one heap. Free memory at the end of another heap could not be returned (glibc's
/// malloc_trim). To be called before another thread starts.
void useOneHeap();

/// Memory in the two forms that show a need to return some.
struct MemoryUse {
    /// The number of memory pages that the system has provided to this process so far without reading a disk
    /// (getrusage, ru_minflt). It grows while a process takes memory, and stays while it only waits.
    std::int64_t pagesProvided = 0;

    /// The bytes of the heap that nobody uses, whether the system has them back or not (glibc's mallinfo2). 0
    /// with another C library.
    std::int64_t bytesFree = 0;
};

/// Any thread.
MemoryUse memoryUse();

/// Returns the free memory of the heap to the system. The C library keeps some of it, for as long as the
/// process lives, when pieces in use lie behind it. Takes up to some dozens of milliseconds. Any thread.
void returnFreeMemory();

} // namespace tavel
