#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace tavel {

/// An immutable run of bytes that is cheap to copy. All copies and slices share one buffer, which lives as
/// long as the last of them. The buffer may be a foreign object (a mapping, a platform's data object). Any
/// thread may use and destroy copies.
class Bytes {
public:
    Bytes() = default;

    /// Shares `size` bytes at `data`, which `owner` keeps alive and unchanged.
    Bytes(std::shared_ptr<const void> owner, const char* data, std::size_t size)
        : owner_(std::move(owner)), data_(data), size_(size) {}

    static Bytes copyOf(std::string_view content);

    /// Takes ownership of the string's buffer without copying it.
    static Bytes adopt(std::string content);

    const char* data() const { return data_; }
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    std::string_view view() const { return {data_, size_}; }

    /// At most `length` bytes from `offset` on. `offset` must not exceed the size.
    Bytes slice(std::size_t offset, std::size_t length) const;

private:
    std::shared_ptr<const void> owner_;
    const char* data_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace tavel
