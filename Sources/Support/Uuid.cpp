#include "Support/Uuid.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>

namespace tavel {

namespace {

constexpr std::string_view digits = "0123456789ABCDEF";

bool isDigit(char character) {
    return digits.find(character) != std::string_view::npos;
}

} // namespace

std::string makeUuid() {
    std::random_device device;
    std::array<std::uint8_t, 16> octets{};
    for (std::size_t i = 0; i < octets.size(); i += 4) {
        const std::uint32_t word = device();
        for (std::size_t byte = 0; byte < 4; ++byte)
            octets[i + byte] = static_cast<std::uint8_t>(word >> (8 * byte));
    }
    octets[6] = static_cast<std::uint8_t>((octets[6] & 0x0F) | 0x40); // RFC 4122, 4.1.3: version 4
    octets[8] = static_cast<std::uint8_t>((octets[8] & 0x3F) | 0x80); // RFC 4122, 4.1.1: the RFC's variant

    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < octets.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        text += digits[octets[i] >> 4];
        text += digits[octets[i] & 0x0F];
    }
    return text;
}

bool isUuid(std::string_view text) {
    constexpr std::string_view form = "xxxxxxxx-xxxx-4xxx-vxxx-xxxxxxxxxxxx";
    constexpr std::string_view variants = "89AB";
    const auto fits = [&](char expected, char given) {
        switch (expected) {
        case 'x':
            return isDigit(given);
        case 'v':
            return variants.find(given) != std::string_view::npos;
        default:
            return given == expected;
        }
    };
    return std::equal(form.begin(), form.end(), text.begin(), text.end(), fits);
}

} // namespace tavel
