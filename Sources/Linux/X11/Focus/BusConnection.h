#pragma once

#include "Linux/X11/Focus/GioPointers.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// An object of a program on a bus, seen as one of its interfaces.
struct BusObject {
    const char* program;
    const char* path;
    const char* interface;
};

/// A connection to a D-Bus message bus of its own, closed with this object. Nothing here waits longer than it
/// is told to, whatever the bus and the programs on it do. When the bus goes, every operation gives nothing.
class BusConnection {
public:
    using Clock = std::chrono::steady_clock;

    /// Nothing if no bus greets at that address in time. Main thread.
    static std::unique_ptr<BusConnection> open(const std::string& address, Clock::time_point end);

    ~BusConnection();
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    GDBusConnection* get() const { return connection_.get(); }
    bool isLost() const { return g_dbus_connection_is_closed(connection_.get()) != FALSE; }

    /// Calls the method with a tuple of arguments, or null for none, which it takes over, and waits for a
    /// reply of that type. Null without one by then. Any thread.
    GioPointer<GVariant> call(const BusObject& object, const char* method, GVariant* arguments,
                              const char* replyType, Clock::time_point end) const;

    /// The process that owns the connection of that unique name, as the bus knows it. Any thread.
    std::optional<std::int32_t> processOf(const std::string& program, Clock::time_point end) const;

private:
    explicit BusConnection(GioPointer<GDBusConnection> connection);

    GioPointer<GDBusConnection> connection_;
};

/// The address of the user's session bus, if there is one; none is ever started for that.
std::optional<std::string> sessionBusAddress();

} // namespace tavel
