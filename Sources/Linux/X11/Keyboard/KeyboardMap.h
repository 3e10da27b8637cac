#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

namespace tavel {

/// What is engraved on keys, by the numbers that X has for it (X protocol, Appendix A, KEYSYM Encoding).
namespace keySymbol {
inline constexpr std::uint32_t capitalV = 0x56;
inline constexpr std::uint32_t v = 0x76;
inline constexpr std::uint32_t numLock = 0xff7f;
inline constexpr std::uint32_t leftControl = 0xffe3;
inline constexpr std::uint32_t rightControl = 0xffe4;
} // namespace keySymbol

/// Which key gives which symbol when it is pressed alone. A group is one of the layouts that the user can
/// switch between, counted from 0.
class KeyboardMap {
public:
    struct Key {
        std::uint8_t code = 0;
        std::vector<std::uint32_t> symbols; // one for each group; may have fewer than there are groups

        /// What becomes of a group that the key does not have (XKB protocol, section 7.2.2): by its bits 6
        /// and 7 it is counted around (0), becomes the last one (1), or the one in bits 4 and 5 (2).
        std::uint8_t groupInformation = 0;
    };

    void add(Key key) { keys_.push_back(std::move(key)); }

    /// The keys that give one of the symbols in any group, in the order of their codes.
    std::vector<std::uint8_t> codesOf(std::initializer_list<std::uint32_t> symbols) const;

    /// One that does so in that group. If none does, the first that does in any.
    std::optional<std::uint8_t> codeOf(std::initializer_list<std::uint32_t> symbols,
                                       std::uint8_t group) const;

private:
    std::vector<Key> keys_;
};

} // namespace tavel
