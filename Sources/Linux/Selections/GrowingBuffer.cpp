#include "Linux/Selections/GrowingBuffer.h"

#include "Support/Throughput.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace tavel {

namespace {

constexpr std::size_t smallestCapacity = std::size_t{64} * 1024;

/// A buffer that outgrows this size gets `hugeCapacity` at once, enough for almost every value. Untouched
/// memory costs only addresses, and the buffer moves once, while it is small.
constexpr std::size_t largeCapacity = std::size_t{4} << 20;
constexpr std::size_t hugeCapacity = std::size_t{256} << 20;

} // namespace

void GrowingBuffer::append(std::string_view bytes) {
    if (bytes.empty())
        return;
    std::memcpy(room(bytes.size()), bytes.data(), bytes.size());
    filled(bytes.size());
}

char* GrowingBuffer::room(std::size_t size) {
    const std::size_t needed = size_ + size;
    if (needed > capacity_)
        resize(capacityFor(needed));
    return bytes_.get() + size_;
}

std::size_t GrowingBuffer::capacityFor(std::size_t needed) const {
    if (needed > largeCapacity && needed <= hugeCapacity)
        return hugeCapacity;
    return std::max({needed, capacity_ * 2, smallestCapacity});
}

Bytes GrowingBuffer::take() {
    if (size_ == 0)
        return {};
    resize(size_);
    const std::shared_ptr<char> owner(std::move(bytes_));
    const std::size_t size = std::exchange(size_, 0);
    capacity_ = 0;
    return {owner, owner.get(), size};
}

void GrowingBuffer::resize(std::size_t capacity) {
    auto* const moved = static_cast<char*>(std::realloc(bytes_.get(), capacity));
    if (moved == nullptr)
        throw std::bad_alloc();
    static_cast<void>(bytes_.release()); // realloc has taken it
    bytes_.reset(moved);
    capacity_ = capacity;
    if (capacity_ == hugeCapacity)
        preferLargePages(bytes_.get(), capacity_);
}

} // namespace tavel
