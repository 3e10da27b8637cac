#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// The address of an element of a program's user interface on the accessibility bus.
struct AccessibleElement {
    std::string program; // unique name of its connection; a bus never uses one again
    std::string path;

    bool operator==(const AccessibleElement&) const = default;
};

/// The element with the keyboard focus, by the reports of programs. Any thread.
class FocusCache {
public:
    /// A program reports that the element has gained or lost the focus.
    void gained(AccessibleElement element);
    void lost(const AccessibleElement& element);

    /// The last element that gained the focus. nullopt if it has lost it since.
    std::optional<AccessibleElement> current() const;

    /// The element of the same program that gained the focus before and did not report its loss. An item of a
    /// view reports the focus while the view keeps it, or while the user types a name elsewhere.
    std::optional<AccessibleElement> previous() const;

    /// The number of reports so far.
    std::uint64_t newsCount() const;

    /// The result of a search. Ignored if reports have come since the count was `newsCount`, because they are
    /// newer than the search.
    void found(AccessibleElement element, std::uint64_t newsCount);

private:
    void put(AccessibleElement element);

    mutable std::mutex mutex_;
    std::vector<AccessibleElement> holders_; // gained the focus and reported no loss; the latest is last
    bool isLastLost_ = true;                 // whether the last element that gained the focus has lost it
    std::uint64_t newsCount_ = 0;
};

} // namespace tavel
