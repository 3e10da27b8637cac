#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tavel {

/// The home platform's flags (`keyFlag`) for the modifiers of a key event, a set of bits of the X protocol.
/// Ignores Caps Lock, Num Lock and mouse buttons.
std::uint64_t keyFlagsOf(std::uint16_t modifiers);

/// The modifiers that the keys set; 0 if they set none. `mapping` is the reply to GetModifierMapping: the
/// same number of key codes for each of the eight modifiers.
std::uint16_t modifiersOf(std::span<const std::uint8_t> keys, std::span<const std::uint8_t> mapping);

/// The sets of modifiers to grab for Control alone, with and without each of the locks. A grab matches only
/// the exact set.
std::vector<std::uint16_t> controlWithLocks(std::uint16_t numLock);

} // namespace tavel
