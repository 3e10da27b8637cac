#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavel {

/// Whether `token` is a number as RFC 8259, section 6, writes it: of any size and precision.
bool isJsonNumber(std::string_view token);

/// The number's integer part, the fraction cut off, modulo 2^64: 7.9 gives 7, -1 gives 2^64 - 1. Computed on
/// the digits, so that it is exact and defined for every number, however large. Nothing for a token that is
/// no number.
std::optional<std::uint64_t> unsignedFromJsonNumber(std::string_view token);

/// False for a number equal to 0 and true for one equal to 1, however they are written (1.0, 10e-1). Nothing
/// for any other token.
std::optional<bool> booleanFromJsonNumber(std::string_view token);

} // namespace tavel
