#include "Linux/Store/BoardKey.h"

#include <glib.h>

#include <algorithm>

namespace tavel {

namespace {

constexpr std::size_t digitCount = 64;

} // namespace

BoardKey::BoardKey(const std::optional<std::string>& name) {
    // The first character distinguishes the general pasteboard from the one named "".
    const std::string identity = name ? "n" + *name : "g";
    GChecksum* const checksum = g_checksum_new(G_CHECKSUM_SHA256);
    g_checksum_update(checksum, reinterpret_cast<const guchar*>(identity.data()),
                      static_cast<gssize>(identity.size()));
    digits_ = g_checksum_get_string(checksum);
    g_checksum_free(checksum);
}

std::optional<BoardKey> BoardKey::fromDigits(std::string_view digits) {
    const auto isDigit = [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); };
    if (digits.size() != digitCount || !std::ranges::all_of(digits, isDigit))
        return std::nullopt;
    BoardKey key;
    key.digits_ = digits;
    return key;
}

} // namespace tavel
