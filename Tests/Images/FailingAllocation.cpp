#include "Tests/Images/FailingAllocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr long never = -1;

/// How many more succeed before one fails; below zero, it has failed or there is none to fail.
std::atomic<long> remaining = never;
std::atomic<bool> hasFailedOnce = false;

void* allocate(std::size_t size) {
    if (remaining >= 0 && remaining-- == 0) {
        hasFailedOnce = true;
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace tavel {

FailingAllocation::FailingAllocation(std::size_t before) {
    hasFailedOnce = false;
    remaining = static_cast<long>(before);
}

FailingAllocation::~FailingAllocation() {
    remaining = never;
}

bool FailingAllocation::hasFailed() const {
    return hasFailedOnce;
}

} // namespace tavel
