#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace tavel {

/// Where an encoder puts its file: memory of a fixed size, filled from the start on. For one thread at a
/// time.
class ImageOutput {
public:
    /// The caller keeps `room` alive.
    explicit ImageOutput(std::span<char> room) : room_(room) {}

    /// False, and nothing is written, if the bytes do not fit. The file is then of no use.
    bool append(std::string_view bytes) {
        if (bytes.size() > room_.size() - size_)
            return false;
        size_ += bytes.copy(room_.data() + size_, bytes.size());
        return true;
    }

    /// What has been written so far.
    std::span<const char> written() const { return room_.first(size_); }

private:
    std::span<char> room_;
    std::size_t size_ = 0;
};

} // namespace tavel
