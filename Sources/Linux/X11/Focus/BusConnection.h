#pragma once

#include "Linux/X11/Focus/GioPointers.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace tavel {

/// An object of a program on a bus, and one of its interfaces.
struct BusObject {
    const char* program;
    const char* path;
    const char* interface;
};

/// A private connection to a D-Bus message bus. No operation waits beyond its deadline, whatever the bus and
/// the programs on it do. After the loss of the bus, every operation returns an empty result.
class BusConnection {
public:
    using Clock = std::chrono::steady_clock;

    /// Returns null if no bus answers at that address before `end`. Main thread.
    static std::unique_ptr<BusConnection> open(const std::string& address, Clock::time_point end);

    ~BusConnection();
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    GDBusConnection* get() const { return connection_.get(); }
    bool isLost() const { return g_dbus_connection_is_closed(connection_.get()) != FALSE; }

    /// Calls the method with a tuple of arguments, or null for none, which it takes over, and waits for a
    /// reply of that type. Null without one by then, or when it is to stop. Any thread.
    GioPointer<GVariant> call(const BusObject& object, const char* method, GVariant* arguments,
                              const char* replyType, Clock::time_point end,
                              const std::stop_token& stop = {}) const;

    /// The process of the connection with that unique name, by the bus's own knowledge. Any thread.
    std::optional<std::int32_t> processOf(const std::string& program, Clock::time_point end) const;

private:
    explicit BusConnection(GioPointer<GDBusConnection> connection);

    GioPointer<GDBusConnection> connection_;
};

/// The address of the user's session bus, nullopt without one. Never starts a bus.
std::optional<std::string> sessionBusAddress();

} // namespace tavel
