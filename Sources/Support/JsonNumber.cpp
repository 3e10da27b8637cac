#include "Support/JsonNumber.h"

#include <algorithm>
#include <limits>

namespace tavel {

namespace {

struct Decimal {
    bool negative = false;
    std::string_view integer;
    std::string_view fraction;
    std::int64_t exponent = 0;

    std::uint64_t digitCount() const { return integer.size() + fraction.size(); }

    unsigned digit(std::uint64_t index) const {
        const char c = index < integer.size() ? integer[index] : fraction[index - integer.size()];
        return static_cast<unsigned>(c - '0');
    }
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string_view takeDigits(std::string_view& rest) {
    std::size_t length = 0;
    while (length < rest.size() && isDigit(rest[length]))
        ++length;
    const std::string_view digits = rest.substr(0, length);
    rest.remove_prefix(digits.size());
    return digits;
}

/// Far above the length of any line, and too small for the sums below to overflow.
constexpr std::int64_t exponentLimit = std::numeric_limits<std::int64_t>::max() / 4;

bool takeExponent(std::string_view& rest, std::int64_t& exponent) {
    if (rest.empty() || (rest.front() != 'e' && rest.front() != 'E'))
        return true;
    rest.remove_prefix(1);
    bool negative = false;
    if (!rest.empty() && (rest.front() == '+' || rest.front() == '-')) {
        negative = rest.front() == '-';
        rest.remove_prefix(1);
    }
    const std::string_view digits = takeDigits(rest);
    for (const char c : digits)
        exponent = exponent > exponentLimit / 10 ? exponentLimit : exponent * 10 + (c - '0');
    if (negative)
        exponent = -exponent;
    return !digits.empty();
}

std::optional<Decimal> parse(std::string_view rest) {
    Decimal decimal;
    if (!rest.empty() && rest.front() == '-') {
        decimal.negative = true;
        rest.remove_prefix(1);
    }
    decimal.integer = takeDigits(rest);
    if (decimal.integer.empty() || (decimal.integer.size() > 1 && decimal.integer.front() == '0'))
        return std::nullopt;
    if (!rest.empty() && rest.front() == '.') {
        rest.remove_prefix(1);
        decimal.fraction = takeDigits(rest);
        if (decimal.fraction.empty())
            return std::nullopt;
    }
    if (!takeExponent(rest, decimal.exponent) || !rest.empty())
        return std::nullopt;
    return decimal;
}

} // namespace

bool isJsonNumber(std::string_view token) {
    return parse(token).has_value();
}

std::optional<std::uint64_t> unsignedFromJsonNumber(std::string_view token) {
    const auto decimal = parse(token);
    if (!decimal)
        return std::nullopt;
    // The number of digits before the decimal point.
    const std::int64_t point = static_cast<std::int64_t>(decimal->integer.size()) + decimal->exponent;
    if (point <= 0)
        return 0;
    const auto wanted = static_cast<std::uint64_t>(point);
    const std::uint64_t written = std::min(wanted, decimal->digitCount());
    std::uint64_t value = 0;
    for (std::uint64_t i = 0; i < written; ++i)
        value = value * 10 + decimal->digit(i);
    // 10^64 is a multiple of 2^64, so 64 appended zeros give the same as more of them.
    const std::uint64_t zeros = std::min<std::uint64_t>(wanted - written, 64);
    for (std::uint64_t i = 0; i < zeros; ++i)
        value *= 10;
    return decimal->negative ? 0 - value : value;
}

std::optional<bool> booleanFromJsonNumber(std::string_view token) {
    const auto decimal = parse(token);
    if (!decimal)
        return std::nullopt;
    std::optional<std::uint64_t> significant;
    for (std::uint64_t i = 0; i < decimal->digitCount(); ++i) {
        if (decimal->digit(i) == 0)
            continue;
        if (significant || decimal->digit(i) != 1)
            return std::nullopt;
        significant = i;
    }
    if (!significant)
        return false;
    // The number is 1 if its only significant digit is the last one before the decimal point.
    const std::int64_t point = static_cast<std::int64_t>(decimal->integer.size()) + decimal->exponent;
    if (decimal->negative || point != static_cast<std::int64_t>(*significant) + 1)
        return std::nullopt;
    return true;
}

} // namespace tavel
