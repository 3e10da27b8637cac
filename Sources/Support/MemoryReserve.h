#pragma once

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <thread>

namespace tavel {

/// A block of memory that is given back when memory has run out, so that a few small allocations still
/// succeed: those of a refusal, for example. For one thread.
class MemoryReserve {
public:
    MemoryReserve() { refill(); }

    /// Runs `action`, which needs little memory and can be run again after std::bad_alloc. If it fails, gives
    /// the block back and tries again for a second. Returns whether it succeeded. Passes on other exceptions.
    template <typename Action>
    bool insist(const Action& action) {
        constexpr std::chrono::milliseconds pause{10};
        constexpr int attempts = 100;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            try {
                action();
                return true;
            } catch (const std::bad_alloc&) {
                if (block_ == nullptr)
                    std::this_thread::sleep_for(pause); // others may free memory meanwhile
                block_.reset();
            }
        }
        return false;
    }

    /// Takes a block again, if it was given back and there is memory. Returns whether it has one.
    bool refill() {
        if (block_ == nullptr)
            block_.reset(std::malloc(size));
        return block_ != nullptr;
    }

private:
    /// Enough for several hundred replies. It is below the size from which allocators map a block by itself,
    /// so that it goes back to where small blocks come from.
    static constexpr std::size_t size = std::size_t{64} * 1024;

    struct Free {
        void operator()(void* block) const { std::free(block); }
    };

    std::unique_ptr<void, Free> block_;
};

} // namespace tavel
