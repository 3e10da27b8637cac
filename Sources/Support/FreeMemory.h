#pragma once

#include <cstdint>

namespace tavel {

/// Makes all threads share one heap. Free memory at the end of another heap could not be returned (glibc's
/// malloc_trim). To be called before another thread starts.
void useOneHeap();

/// The number of memory pages that the system has provided to this process so far without reading a disk
/// (getrusage, ru_minflt). It grows while a process takes memory, and stays while it only waits. Any thread.
std::int64_t pagesProvided();

/// Returns the free memory of the heap to the system. The C library keeps some of it, for as long as the
/// process lives, when pieces in use lie behind it. Takes up to some dozens of milliseconds. Any thread.
void returnFreeMemory();

} // namespace tavel
