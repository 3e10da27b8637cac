#pragma once

#include "Linux/X11/Focus/BusConnection.h"
#include "Linux/X11/Focus/FocusCache.h"

#include <functional>
#include <memory>

namespace tavel {

/// Makes the programs on an accessibility bus report their focus, and updates the cache on the connection's
/// own thread. So after a reply from a program, the cache holds all its earlier reports, even if the main
/// loop has not run. To be created and destroyed on the main thread.
class FocusListener {
public:
    using Clock = BusConnection::Clock;

    /// Listens until its destruction. `noticed` is called on the connection's thread after each reported
    /// change of the focus or of the active window. A call may still run shortly after the destruction. The
    /// connection must outlive this object.
    FocusListener(const BusConnection& bus, std::shared_ptr<FocusCache> cache, std::function<void()> noticed);
    ~FocusListener();
    FocusListener(const FocusListener&) = delete;
    FocusListener& operator=(const FocusListener&) = delete;

    /// Asks the programs for reports. False if the bus or its registry does not accept that before `end`.
    bool begin(Clock::time_point end);

    /// Withdraws the request. A registry that does not accept that before `end` notices the end of the
    /// connection.
    void finish(Clock::time_point end);

private:
    bool registryAgrees(const char* method, Clock::time_point end) const;

    const BusConnection& bus_;
    guint filter_;
};

} // namespace tavel
