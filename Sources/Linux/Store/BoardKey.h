#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// Identifies a pasteboard in the store: the SHA-256 of its name, as 64 hexadecimal digits.
class BoardKey {
public:
    /// The general pasteboard without a name, otherwise the named one. A name may be any bytes.
    explicit BoardKey(const std::optional<std::string>& name);

    /// The key with these digits; nullopt if they are none.
    static std::optional<BoardKey> fromDigits(std::string_view digits);

    const std::string& digits() const { return digits_; }

    bool operator<(const BoardKey& other) const { return digits_ < other.digits_; }

private:
    BoardKey() = default;

    std::string digits_;
};

} // namespace tavel
