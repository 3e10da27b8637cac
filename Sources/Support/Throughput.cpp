#include "Support/Throughput.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <memory>

namespace tavel {

void enlargePipe([[maybe_unused]] int descriptor) {
#ifdef F_SETPIPE_SZ
    // The default limit for unprivileged processes (pipe(7)).
    constexpr int largePipe = 1 << 20;
    if (const int size = fcntl(descriptor, F_GETPIPE_SZ); size > 0 && size < largePipe)
        static_cast<void>(fcntl(descriptor, F_SETPIPE_SZ, largePipe));
#endif
}

void preferLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t size) {
#ifdef MADV_HUGEPAGE
    constexpr std::size_t pageBytes = 4096; // madvise(2) takes whole pages
    if (std::align(pageBytes, pageBytes, memory, size) != nullptr)
        static_cast<void>(madvise(memory, size / pageBytes * pageBytes, MADV_HUGEPAGE));
#endif
}

} // namespace tavel
