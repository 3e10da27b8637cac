#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace tavel {

/// Collects the types of another program's offer: each once, `mostOfferedTypes` at most, and only names that
/// a type can have.
class OfferedTypes {
public:
    /// If there is no memory for a type, the offer has none: with some of them it would be another content.
    void add(std::string_view type) noexcept;

    /// Those in the order of the offer.
    std::vector<std::string> take() { return std::move(types_); }

private:
    std::vector<std::string> types_;
    std::unordered_set<std::string> known_; // a program may offer thousands
    bool isLost_ = false;
};

} // namespace tavel
