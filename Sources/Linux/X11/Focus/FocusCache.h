#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// An element of a program's user interface, by its address on the accessibility bus.
struct AccessibleElement {
    std::string program; // the unique name of its connection, which no other ever has
    std::string path;

    bool operator==(const AccessibleElement&) const = default;
};

/// The element that has the keyboard focus, as far as programs have told. Any thread.
class FocusCache {
public:
    /// The news of programs.
    void gained(AccessibleElement element);
    void lost(const AccessibleElement& element);

    /// The last one that has told that it gained the focus. Nothing if it has lost it since.
    std::optional<AccessibleElement> current() const;

    /// The one of the same program that told so before, and has not told that it lost the focus. An item of a
    /// view tells that it gains it while the view keeps it, or while a name is typed elsewhere.
    std::optional<AccessibleElement> previous() const;

    /// How many news there have been.
    std::uint64_t newsCount() const;

    /// What was found out by looking. It counts only if there have been no news since there were `newsCount`
    /// of them, for news are never older than what was looked at.
    void found(AccessibleElement element, std::uint64_t newsCount);

private:
    void put(AccessibleElement element);

    mutable std::mutex mutex_;
    std::vector<AccessibleElement> holders_; // that have not told that they lost it, the latest at the end
    bool isLastLost_ = true; // whether the latest one of all has lost it, and is not among them
    std::uint64_t newsCount_ = 0;
};

} // namespace tavel
