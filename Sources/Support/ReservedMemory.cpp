#include "Support/ReservedMemory.h"

#include "Support/Throughput.h"

#include <sys/mman.h>
#include <unistd.h>

#include <new>

namespace tavel {

namespace {

/// The memory in front of this has small pages, because many small contents may wait.
constexpr std::size_t largePagesStart = std::size_t{4} << 20;

std::size_t inWholePages(std::size_t size) {
    static const auto pageBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (size + pageBytes - 1) / pageBytes * pageBytes;
}

} // namespace

ReservedMemory::ReservedMemory(std::size_t size) : size_(inWholePages(size)) {
    void* const mapped =
        mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped == MAP_FAILED)
        throw std::bad_alloc();
    bytes_ = static_cast<char*>(mapped);
    if (size_ > largePagesStart)
        preferLargePages(bytes_ + largePagesStart, size_ - largePagesStart);
}

ReservedMemory::~ReservedMemory() {
    munmap(bytes_, size_);
}

void ReservedMemory::shrink(std::size_t size) {
    const std::size_t kept = inWholePages(size);
    if (kept < size_ && munmap(bytes_ + kept, size_ - kept) == 0)
        size_ = kept;
}

} // namespace tavel
