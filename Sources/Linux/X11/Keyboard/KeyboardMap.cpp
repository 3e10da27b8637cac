#include "Linux/X11/Keyboard/KeyboardMap.h"

#include <algorithm>
#include <cstddef>

namespace tavel {

namespace {

bool isOneOf(std::uint32_t symbol, std::initializer_list<std::uint32_t> symbols) {
    return std::ranges::find(symbols, symbol) != symbols.end();
}

/// The key's group for the keyboard's group `group`. The key must have at least one.
std::size_t groupWithin(const KeyboardMap::Key& key, std::uint8_t group) {
    const std::size_t count = key.symbols.size();
    if (group < count)
        return group;
    const std::size_t redirected = (key.groupInformation >> 4) & 3;
    switch (key.groupInformation >> 6) {
    case 1:
        return count - 1;
    case 2:
        return redirected < count ? redirected : 0;
    default:
        return group % count;
    }
}

} // namespace

std::vector<std::uint8_t> KeyboardMap::codesOf(std::initializer_list<std::uint32_t> symbols) const {
    std::vector<std::uint8_t> codes;
    for (const Key& key : keys_) {
        if (std::ranges::any_of(key.symbols, [&](std::uint32_t symbol) { return isOneOf(symbol, symbols); }))
            codes.push_back(key.code);
    }
    return codes;
}

std::vector<std::uint8_t> KeyboardMap::codesOf(std::initializer_list<std::uint32_t> symbols,
                                               std::uint8_t group) const {
    std::vector<std::uint8_t> codes;
    for (const Key& key : keys_) {
        if (!key.symbols.empty() && isOneOf(key.symbols[groupWithin(key, group)], symbols))
            codes.push_back(key.code);
    }
    return codes.empty() ? codesOf(symbols) : codes;
}

std::optional<std::uint8_t> KeyboardMap::codeOf(std::initializer_list<std::uint32_t> symbols,
                                                std::uint8_t group) const {
    const std::vector<std::uint8_t> codes = codesOf(symbols, group);
    return codes.empty() ? std::nullopt : std::optional(codes.front());
}

} // namespace tavel
