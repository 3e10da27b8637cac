#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

namespace tavel {

/// KEYSYM numbers (X protocol, Appendix A, KEYSYM Encoding).
namespace keySymbol {
inline constexpr std::uint32_t capitalV = 0x56;
inline constexpr std::uint32_t v = 0x76;
inline constexpr std::uint32_t numLock = 0xff7f;
inline constexpr std::uint32_t leftControl = 0xffe3;
inline constexpr std::uint32_t rightControl = 0xffe4;
} // namespace keySymbol

/// The symbols that each key gives without modifiers. A group is one of the layouts that the user can switch
/// between, counted from 0.
class KeyboardMap {
public:
    struct Key {
        std::uint8_t code = 0;
        std::vector<std::uint32_t> symbols; // one for each of the key's groups

        /// How the key treats a group that it does not have (XKB protocol, section 7.2.2). Bits 6 and 7: 0
        /// wraps around, 1 takes the last group, 2 takes the group in bits 4 and 5.
        std::uint8_t groupInformation = 0;
    };

    void add(Key key) { keys_.push_back(std::move(key)); }

    /// The codes of the keys that give one of the symbols in any group, in the order of `add`.
    std::vector<std::uint8_t> codesOf(std::initializer_list<std::uint32_t> symbols) const;

    /// The codes of the keys that give one of the symbols while this is the keyboard's group. If none does,
    /// as in the group of another script, those of any group: programs then find their shortcuts so, too.
    std::vector<std::uint8_t> codesOf(std::initializer_list<std::uint32_t> symbols, std::uint8_t group) const;

    /// The first of these keys. nullopt if no key gives one of the symbols.
    std::optional<std::uint8_t> codeOf(std::initializer_list<std::uint32_t> symbols,
                                       std::uint8_t group) const;

private:
    std::vector<Key> keys_;
};

} // namespace tavel
