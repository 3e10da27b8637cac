#pragma once

#include <cstddef>

namespace tavel {

// Hints that make large transfers faster where the system supports them. None changes what a program sees,
// so failures are ignored.

/// Raises a pipe's capacity from the usual 64 KiB to 1 MiB, so that its two ends switch less often. That
/// halves the time for a line of 90 MB. No effect on other descriptors.
void enlargePipe(int descriptor);

/// Requests large pages for memory that is about to be filled. A line of 90 MB then takes a quarter less
/// time, most of which is page faults. A selection of 64 MiB that is read takes a third less.
void preferLargePages(void* memory, std::size_t size);

} // namespace tavel
