#pragma once

#include <cstddef>

namespace tavel {

/// Memory for bytes whose number is known only when all have arrived. Untouched memory costs only addresses.
/// What is touched goes back to the system with the object.
class ReservedMemory {
public:
    /// Throws std::bad_alloc if there are no `size` addresses.
    explicit ReservedMemory(std::size_t size);
    ~ReservedMemory();
    ReservedMemory(const ReservedMemory&) = delete;
    ReservedMemory& operator=(const ReservedMemory&) = delete;

    char* bytes() { return bytes_; }

    /// Gives back what lies behind the first `size` bytes, which stay where they are.
    void shrink(std::size_t size);

private:
    char* bytes_;
    std::size_t size_; // in whole pages
};

} // namespace tavel
