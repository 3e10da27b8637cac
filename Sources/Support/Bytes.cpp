#include "Support/Bytes.h"

#include <algorithm>
#include <utility>

namespace tavel {

Bytes Bytes::copyOf(std::string_view content) {
    return adopt(std::string(content));
}

Bytes Bytes::adopt(std::string content) {
    auto owner = std::make_shared<const std::string>(std::move(content));
    const char* data = owner->data();
    const std::size_t size = owner->size();
    return {std::move(owner), data, size};
}

Bytes Bytes::slice(std::size_t offset, std::size_t length) const {
    return {owner_, data_ + offset, std::min(length, size_ - offset)};
}

} // namespace tavel
