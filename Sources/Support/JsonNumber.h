#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavel {

/// Whether `token` is a number in the grammar of RFC 8259, section 6, of any size and precision.
bool isJsonNumber(std::string_view token);

/// The number without its fraction, modulo 2^64: 7.9 gives 7, -1 gives 2^64 - 1. The computation on the
/// digits is exact for every number, however large. nullopt for a token that is no number.
std::optional<std::uint64_t> unsignedFromJsonNumber(std::string_view token);

/// False for a number equal to 0 and true for one equal to 1, in any notation (1.0, 10e-1). nullopt for any
/// other token.
std::optional<bool> booleanFromJsonNumber(std::string_view token);

} // namespace tavel
