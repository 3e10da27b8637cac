#pragma once

#include "Linux/X11/Focus/BusConnection.h"
#include "Linux/X11/Focus/FocusCache.h"

#include <functional>
#include <memory>

namespace tavel {

/// Has the programs on an accessibility bus tell where their focus goes, and keeps the cache up to date, on
/// the connection's own thread: whoever has got a reply knows of everything that its sender told before,
/// whether or not the main loop has run. Created and destroyed on the main thread.
class FocusListener {
public:
    using Clock = BusConnection::Clock;

    /// Listens from now on until it is destroyed. `noticed` is called on the connection's thread after each
    /// change of the focus or of the active window that a program tells, and may still be called for a
    /// moment after this object has gone. The connection has to outlive this object.
    FocusListener(const BusConnection& bus, std::shared_ptr<FocusCache> cache, std::function<void()> noticed);
    ~FocusListener();
    FocusListener(const FocusListener&) = delete;
    FocusListener& operator=(const FocusListener&) = delete;

    /// Asks the programs to tell. False if the bus or its registry does not agree in time.
    bool begin(Clock::time_point end);

    /// Asks them to tell no longer; what the registry does not take in by then, it learns from the end of the
    /// connection.
    void finish(Clock::time_point end);

private:
    bool registryAgrees(const char* method, Clock::time_point end) const;

    const BusConnection& bus_;
    guint filter_;
};

} // namespace tavel
