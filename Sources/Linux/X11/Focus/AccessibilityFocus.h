#pragma once

#include "Linux/X11/Focus/BusConnection.h"
#include "Linux/X11/Focus/FocusCache.h"
#include "Linux/X11/Focus/FocusListener.h"
#include "Linux/X11/Focus/FocusSearcher.h"
#include "Linux/X11/Focus/MainLoopReminder.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// Knows, from the user's accessibility bus, which element has the keyboard focus, as long as it exists. Main
/// thread.
class AccessibilityFocus {
public:
    using Clock = BusConnection::Clock;

    /// Nothing without an accessibility bus that answers by then. `settled` is called on GLib's default main
    /// context a while after something about the focus has been told, though never after this object has
    /// gone.
    static std::unique_ptr<AccessibilityFocus> open(std::function<void()> settled, Clock::time_point end);

    ~AccessibilityFocus();
    AccessibilityFocus(const AccessibilityFocus&) = delete;
    AccessibilityFocus& operator=(const AccessibilityFocus&) = delete;

    bool isLost() const { return bus_->isLost(); }

    /// Looks for the focus of that process if it has not told of it: until `end`, or in the background.
    void search(std::int32_t process, Clock::time_point end) { searcher_.search(process, end); }
    void searchInBackground(std::int32_t process) { searcher_.request(process); }

    /// The role of the focused element, by its number (AT-SPI, AtspiRole), if it is an element of that
    /// process. Nothing without an answer. No call waits longer than 0.04 s, and nothing longer than until
    /// `end`.
    std::optional<std::uint32_t> focusedRole(std::int32_t process, Clock::time_point end);

private:
    AccessibilityFocus(std::unique_ptr<BusConnection> bus, std::function<void()> settled);

    std::optional<std::uint32_t> roleOf(const AccessibleElement& element, Clock::time_point end) const;
    bool belongsTo(const AccessibleElement& element, std::int32_t process, Clock::time_point end);

    struct Owner {
        std::string program;
        std::int32_t process = 0;
    };

    std::unique_ptr<BusConnection> bus_;
    std::shared_ptr<FocusCache> cache_;
    std::shared_ptr<MainLoopReminder> reminder_;
    FocusListener listener_;
    FocusSearcher searcher_;
    Owner owner_; // the last one that the bus has told
};

} // namespace tavel
