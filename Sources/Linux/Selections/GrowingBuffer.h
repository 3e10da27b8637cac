#pragma once

#include "Support/Bytes.h"

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace tavel {

/// Collects bytes that arrive in parts in one contiguous buffer. A large buffer grows in place, so that no
/// second copy of it exists at any time.
class GrowingBuffer {
public:
    std::size_t size() const { return size_; }

    /// Throws std::bad_alloc and leaves the buffer unchanged.
    void append(std::string_view bytes);

    /// Memory for the next `size` bytes, to be filled without a copy; `filled` says how many of them were.
    /// Valid until the next operation. Throws like `append`.
    char* room(std::size_t size);
    void filled(std::size_t size) { size_ += size; }

    /// The bytes, without a copy. Leaves the buffer empty.
    Bytes take();

private:
    struct Free {
        void operator()(char* bytes) const { std::free(bytes); }
    };

    std::size_t capacityFor(std::size_t needed) const;
    void resize(std::size_t capacity);

    std::unique_ptr<char, Free> bytes_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace tavel
