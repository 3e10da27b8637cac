#include "Support/FreeMemory.h"

#include <sys/resource.h>

#ifdef __GLIBC__
#include <malloc.h>
#endif
#ifdef __APPLE__
#include <malloc/malloc.h>
#endif

namespace tavel {

void useOneHeap() {
#ifdef __GLIBC__
    static_cast<void>(mallopt(M_ARENA_MAX, 1));
#endif
}

MemoryUse memoryUse() {
    MemoryUse use;
    rusage usage{};
    if (getrusage(RUSAGE_SELF, &usage) == 0)
        use.pagesProvided = usage.ru_minflt;
#ifdef __GLIBC__
    use.bytesFree = static_cast<std::int64_t>(mallinfo2().fordblks);
#endif
    return use;
}

void returnFreeMemory() {
#ifdef __GLIBC__
    static_cast<void>(malloc_trim(0));
#endif
#ifdef __APPLE__
    static_cast<void>(malloc_zone_pressure_relief(nullptr, 0)); // of all zones, as much as possible
#endif
}

} // namespace tavel
