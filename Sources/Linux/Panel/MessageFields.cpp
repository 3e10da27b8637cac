#include "Linux/Panel/MessageFields.h"

#include "Support/Base64.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace tavel {

MessageWriter& MessageWriter::add(double number) {
    std::array<char, 32> digits{}; // 24 are the most that the shortest exact form takes
    const auto result = std::to_chars(digits.begin(), digits.end(), number);
    line_.append(1, ' ').append(digits.begin(), result.ptr);
    return *this;
}

MessageWriter& MessageWriter::add(std::string_view text) {
    line_ += ' ';
    appendBase64(line_, text);
    return *this;
}

MessageReader::MessageReader(std::string_view line)
    : word_(line.substr(0, line.find(' '))), rest_(line.substr(word_.size())) {}

double MessageReader::number() {
    const std::string_view field = nextField();
    double value = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    if (error == std::errc{} && end == field.data() + field.size() && std::isfinite(value))
        return value;
    hasFailed_ = true;
    return 0;
}

std::string MessageReader::text() {
    if (const auto bytes = decodeBase64(nextField()))
        return std::string(bytes->view());
    hasFailed_ = true;
    return {};
}

std::string_view MessageReader::nextField() {
    if (rest_.empty()) {
        hasFailed_ = true;
        return {};
    }
    rest_.remove_prefix(1);
    const std::string_view field = rest_.substr(0, rest_.find(' '));
    rest_.remove_prefix(field.size());
    return field;
}

} // namespace tavel
