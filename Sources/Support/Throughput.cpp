#include "Support/Throughput.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <cstdint>

namespace tavel {

void enlargePipe([[maybe_unused]] int descriptor) {
#ifdef F_SETPIPE_SZ
    // What an unprivileged process may ask for, unless the administrator lowered it (pipe(7)).
    constexpr int largePipe = 1 << 20;
    if (const int size = fcntl(descriptor, F_GETPIPE_SZ); size > 0 && size < largePipe)
        static_cast<void>(fcntl(descriptor, F_SETPIPE_SZ, largePipe));
#endif
}

void preferLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t size) {
#ifdef MADV_HUGEPAGE
    constexpr std::uintptr_t pageBytes =
        4096; // madvise(2) takes whole pages; inside larger ones this is harmless
    const auto start = (reinterpret_cast<std::uintptr_t>(memory) + pageBytes - 1) / pageBytes * pageBytes;
    const auto end = (reinterpret_cast<std::uintptr_t>(memory) + size) / pageBytes * pageBytes;
    if (start < end)
        static_cast<void>(madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE));
#endif
}

} // namespace tavel
