#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <span>

namespace tavel {

/// Memory between two pages that cannot be accessed, so that an access before its start or behind its end
/// ends the test, also without a sanitizer.
class GuardedMemory {
public:
    explicit GuardedMemory(std::size_t least)
        : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))), size_((least + page_ - 1) / page_ * page_) {
        void* const mapped = mmap(nullptr, size_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED)
            std::abort();
        start_ = static_cast<char*>(mapped) + page_;
        if (mprotect(start_, size_, PROT_READ | PROT_WRITE) != 0)
            std::abort();
    }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    ~GuardedMemory() { munmap(start_ - page_, size_ + 2 * page_); }

    std::span<char> all() const { return {start_, size_}; }

private:
    std::size_t page_;
    std::size_t size_;
    char* start_ = nullptr;
};

} // namespace tavel
