#pragma once

#include <cstddef>

namespace tavel {

// Hints that make large transfers cheaper where the system knows them. None changes what a program sees, and
// none can fail in a way that matters.

/// Lets the pipe hold more than its usual 64 KiB, so that its two ends take turns less often: half the time
/// for a line of 90 MB. Does nothing to what is no pipe.
void enlargePipe(int descriptor);

/// Asks for large pages behind memory that is about to be filled: a quarter less time for a line of 90 MB,
/// most of which goes into first touches of pages.
void preferLargePages(void* memory, std::size_t size);

/// Has the system put memory behind addresses that are about to be filled, all at once instead of page by
/// page as they are touched: a fifth less time for 64 MiB that arrive in increments. Unlike large pages it
/// takes memory that was used before, which is quick also on a virtual machine.
void provideMemory(void* memory, std::size_t size);

} // namespace tavel
