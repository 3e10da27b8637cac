#pragma once

#include <bitset>
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

/// A set of keys: a bit for each key code.
using KeySet = std::bitset<256>;

/// The set of keys in the form of the X protocol: key code n is bit n % 8 of byte n / 8.
KeySet keySetOf(std::span<const std::uint8_t, 32> bytes);

/// The keys that set a modifier other than `locks`. Keys that set one of `locks` as well are left out: to
/// release or to press such a key can change the lock.
KeySet modifierKeys(std::span<const std::uint8_t> mapping, std::uint16_t locks);

/// The sets of modifiers to grab for Control alone, with and without each of the locks. A grab matches only
/// the exact set.
std::vector<std::uint16_t> controlWithLocks(std::uint16_t numLock);

} // namespace tavel
