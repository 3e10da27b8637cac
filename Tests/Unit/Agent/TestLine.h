#pragma once

#include "Support/LineReader.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>

namespace tavel {

/// A line as LineReader returns it: behind it follow its terminator and more text, exactly as many bytes as a
/// decoder may read there.
class TestLine {
public:
    explicit TestLine(std::string_view text)
        : size_(text.size()),
          bytes_(std::make_unique_for_overwrite<char[]>(text.size() + LineReader::padding)) {
        char* const behind = std::ranges::copy(text, bytes_.get()).out;
        std::fill_n(behind, LineReader::padding, '}');
        *behind = '\n';
    }

    LineReader::Line line() { return {{bytes_.get(), size_}, {}}; }

private:
    std::size_t size_;
    std::unique_ptr<char[]> bytes_;
};

} // namespace tavel
