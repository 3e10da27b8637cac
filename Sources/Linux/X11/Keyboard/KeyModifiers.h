#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tavel {

/// The modifiers of a key's event, a set of the X protocol's bits, as flags of the home platform (`keyFlag`).
/// Caps Lock, Num Lock and mouse buttons are none there.
std::uint64_t keyFlagsOf(std::uint16_t modifiers);

/// The modifiers that one of the keys gives; 0 if none does. `mapping` lists the keys of each of the eight
/// modifiers one after the other, the same number for each, as the server tells them
/// (GetModifierMapping).
std::uint16_t modifiersOf(std::span<const std::uint8_t> keys, std::span<const std::uint8_t> mapping);

/// Control alone as a grab has to name it, which takes modifiers exactly: with and without each of the locks.
std::vector<std::uint16_t> controlWithLocks(std::uint16_t numLock);

} // namespace tavel
