#pragma once

#include <sys/types.h>

#include <cstddef>

namespace tavel {

/// Like write(2), but a reader that has gone raises no SIGPIPE in this process: EPIPE alone tells of it. Any
/// thread.
ssize_t writeWithoutSignal(int descriptor, const char* bytes, std::size_t size);

} // namespace tavel
