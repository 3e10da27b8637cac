#pragma once

#include <unistd.h>

#include <cstddef>
#include <fstream>

namespace tavel {

/// How much this process may grow during a flood, in bytes. AddressSanitizer keeps what is freed for a while.
#ifdef __SANITIZE_ADDRESS__
inline constexpr std::size_t residentGrowth = std::size_t{64} << 20;
#else
inline constexpr std::size_t residentGrowth = std::size_t{6} << 20;
#endif

/// The memory that this process uses, in bytes (proc(5), statm, second field).
inline std::size_t residentBytes() {
    std::ifstream file("/proc/self/statm");
    std::size_t pages = 0;
    file >> pages >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

} // namespace tavel
