#pragma once

#include "Support/LineReader.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <utility>

namespace tavel {

/// A line as LineReader returns it: behind it follow its terminator and more text, exactly as many bytes as a
/// decoder may read there.
class TestLine {
public:
    enum class Kind { lent, owned };

    explicit TestLine(std::string_view text, Kind kind = Kind::lent)
        : size_(text.size()), kind_(kind),
          bytes_(std::make_shared_for_overwrite<char[]>(text.size() + LineReader::padding)) {
        char* const behind = std::ranges::copy(text, bytes_.get()).out;
        std::fill_n(behind, LineReader::padding, '}');
        *behind = '\n';
    }

    /// Gives up the bytes of an owned line.
    LineReader::Line take() {
        const std::span<char> text(bytes_.get(), size_);
        if (kind_ == Kind::lent)
            return {text, nullptr};
        return {text, std::move(bytes_)};
    }

private:
    std::size_t size_;
    Kind kind_;
    std::shared_ptr<char[]> bytes_;
};

} // namespace tavel
