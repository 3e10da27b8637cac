#pragma once

#include "Linux/X11/Focus/GioPointers.h"

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace tavel {

/// A real session bus, which starts a real accessibility bus on demand, as on a desktop. Ends both, and all
/// processes that they have started, in its destructor. Throws if they do not start.
class TestAccessibilityBus {
public:
    /// `runtimeDirectory` holds the sockets. The buses belong to `display`, but show nothing there.
    TestAccessibilityBus(const std::filesystem::path& runtimeDirectory, const std::string& display);
    ~TestAccessibilityBus();
    TestAccessibilityBus(const TestAccessibilityBus&) = delete;
    TestAccessibilityBus& operator=(const TestAccessibilityBus&) = delete;

    /// The session bus's address.
    const std::string& sessionAddress() const { return sessionAddress_; }

    /// The accessibility bus's address.
    const std::string& address() const { return address_; }

    /// A new connection to the accessibility bus.
    GioPointer<GDBusConnection> connect() const;

    /// The processes, for signals: the session bus, the accessibility bus's launcher, that bus, its registry.
    pid_t session() const { return session_; }
    pid_t launcher() const { return launcher_; }
    pid_t process() const { return bus_; }
    pid_t registry() const { return registry_; }

    /// `stop` ends the accessibility bus. `start` makes the session bus start another one.
    void stop();
    void start();

private:
    std::string sessionAddress_;
    std::string address_;
    pid_t session_ = -1;
    pid_t launcher_ = -1; // a child of the session bus
    pid_t bus_ = -1;
    pid_t registry_ = -1;
};

/// Calls a method on a bus and returns the reply. Throws without one.
GioPointer<GVariant> callOnBus(GDBusConnection* connection, const char* program, const char* path,
                               const char* interface, const char* method, GVariant* arguments);

} // namespace tavel
