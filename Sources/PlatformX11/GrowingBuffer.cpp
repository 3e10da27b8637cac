#include "PlatformX11/GrowingBuffer.h"

#include "Support/Throughput.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace tavel {

namespace {

constexpr std::size_t smallestCapacity = std::size_t{64} * 1024;

/// From here on the buffer gets addresses for as much as anybody sends. Memory that is not touched costs only
/// addresses, and large pages save most of the time that first touches take. They do not move well, so this
/// comes once, while there is little to move.
constexpr std::size_t largeCapacity = std::size_t{4} << 20;
constexpr std::size_t hugeCapacity = std::size_t{256} << 20;
constexpr std::size_t largePageBytes = std::size_t{2} << 20;

} // namespace

void GrowingBuffer::append(std::string_view bytes) {
    if (bytes.empty())
        return;
    const std::size_t needed = size_ + bytes.size();
    if (needed > capacity_ && (needed <= largeCapacity || needed > hugeCapacity || !makeHuge()))
        resize(std::max({needed, capacity_ * 2, smallestCapacity}));
    std::memcpy(bytes_.get() + size_, bytes.data(), bytes.size());
    size_ = needed;
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

/// False if there are not as many addresses.
bool GrowingBuffer::makeHuge() {
    std::unique_ptr<char, Free> huge(static_cast<char*>(std::aligned_alloc(largePageBytes, hugeCapacity)));
    if (huge == nullptr)
        return false;
    preferLargePages(huge.get(), hugeCapacity);
    if (size_ > 0)
        std::memcpy(huge.get(), bytes_.get(), size_);
    bytes_ = std::move(huge);
    capacity_ = hugeCapacity;
    return true;
}

void GrowingBuffer::resize(std::size_t capacity) {
    auto* const moved = static_cast<char*>(std::realloc(bytes_.get(), capacity));
    if (moved == nullptr)
        throw std::bad_alloc();
    static_cast<void>(bytes_.release()); // realloc has taken it
    bytes_.reset(moved);
    capacity_ = capacity;
}

} // namespace tavel
