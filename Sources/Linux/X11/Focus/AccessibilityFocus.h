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

/// Follows the keyboard focus on the user's accessibility bus while this object exists. Main thread.
class AccessibilityFocus {
public:
    using Clock = BusConnection::Clock;

    /// Returns null if no accessibility bus answers before `end`. `settled` is called on GLib's default main
    /// context a moment after programs have reported changes of the focus, and never after the destruction of
    /// this object.
    static std::unique_ptr<AccessibilityFocus> open(std::function<void()> settled, Clock::time_point end);

    ~AccessibilityFocus();
    AccessibilityFocus(const AccessibilityFocus&) = delete;
    AccessibilityFocus& operator=(const AccessibilityFocus&) = delete;

    bool isLost() const { return bus_->isLost(); }

    /// Looks for the focus of a process that has not reported it: now, until `end`, or in the background.
    void search(std::int32_t process, Clock::time_point end) { searcher_.search(process, end); }
    void searchInBackground(std::int32_t process) { searcher_.request(process); }

    /// The role of the focused element (the number of an AtspiRole of AT-SPI), if the element belongs to that
    /// process. nullopt if it does not, or without an answer. `callTimeOut` limits each call, and the
    /// deadline `end` limits the whole query.
    std::optional<std::uint32_t> focusedRole(std::int32_t process, Clock::time_point end,
                                             Clock::duration callTimeOut);

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
    Owner owner_; // the bus's latest answer
};

} // namespace tavel
