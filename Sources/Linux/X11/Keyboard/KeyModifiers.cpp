#include "Linux/X11/Keyboard/KeyModifiers.h"

#include "Platform/KeyboardTap.h"

#include <xcb/xproto.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace tavel {

namespace {

constexpr std::size_t modifierCount = 8;

/// The usual meaning of the modifiers: Mod1 is Alt, Mod4 is the Windows key.
constexpr std::array flags{
    std::pair<unsigned int, std::uint64_t>{XCB_MOD_MASK_SHIFT, keyFlag::shift},
    std::pair<unsigned int, std::uint64_t>{XCB_MOD_MASK_CONTROL, keyFlag::command},
    std::pair<unsigned int, std::uint64_t>{XCB_MOD_MASK_1, keyFlag::option},
    std::pair<unsigned int, std::uint64_t>{XCB_MOD_MASK_4, keyFlag::control},
};

} // namespace

std::uint64_t keyFlagsOf(std::uint16_t modifiers) {
    std::uint64_t found = 0;
    for (const auto& [modifier, flag] : flags) {
        if ((modifiers & modifier) != 0)
            found |= flag;
    }
    return found;
}

std::uint16_t modifiersOf(std::span<const std::uint8_t> keys, std::span<const std::uint8_t> mapping) {
    const std::size_t keysEach = mapping.size() / modifierCount;
    unsigned int found = 0;
    for (std::size_t position = 0; position < keysEach * modifierCount; ++position) {
        if (std::ranges::find(keys, mapping[position]) != keys.end())
            found |= 1U << (position / keysEach);
    }
    return static_cast<std::uint16_t>(found);
}

KeySet keySetOf(std::span<const std::uint8_t, 32> bytes) {
    KeySet keys;
    for (std::size_t code = 0; code < keys.size(); ++code)
        keys.set(code, (bytes[code / 8] >> (code % 8) & 1) != 0);
    return keys;
}

KeySet modifierKeys(std::span<const std::uint8_t> mapping, std::uint16_t locks) {
    const std::size_t keysEach = mapping.size() / modifierCount;
    KeySet modifiers;
    KeySet lockKeys;
    for (std::size_t position = 0; position < keysEach * modifierCount; ++position) {
        const bool isLock = (locks >> (position / keysEach) & 1) != 0;
        (isLock ? lockKeys : modifiers).set(mapping[position]);
    }
    lockKeys.set(0); // stands for no key
    return modifiers & ~lockKeys;
}

std::vector<std::uint16_t> controlWithLocks(std::uint16_t numLock) {
    constexpr std::uint16_t control = XCB_MOD_MASK_CONTROL;
    constexpr std::uint16_t capsLock = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_LOCK;
    std::vector<std::uint16_t> variants{control, capsLock};
    // A layout can have no Num Lock, or have it on the same modifier as Control or Caps Lock.
    if ((capsLock | numLock) != capsLock) {
        variants.push_back(control | numLock);
        variants.push_back(capsLock | numLock);
    }
    return variants;
}

} // namespace tavel
