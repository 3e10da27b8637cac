#pragma once

#include "Linux/X11/Focus/GioPointers.h"

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace tavel {

/// A real session bus with a real accessibility bus, which it starts on demand as on a desktop. They and what
/// they have started end with this object. Throws when they do not start.
class TestAccessibilityBus {
public:
    /// They live in that runtime directory and show nothing, but belong to that display.
    TestAccessibilityBus(const std::filesystem::path& runtimeDirectory, const std::string& display);
    ~TestAccessibilityBus();
    TestAccessibilityBus(const TestAccessibilityBus&) = delete;
    TestAccessibilityBus& operator=(const TestAccessibilityBus&) = delete;

    /// Where the session bus is.
    const std::string& sessionAddress() const { return sessionAddress_; }

    /// A new connection to the accessibility bus.
    GioPointer<GDBusConnection> connect() const;

    /// The processes, for signals: the session bus, what starts the accessibility bus, this bus, its
    /// registry.
    pid_t session() const { return session_; }
    pid_t launcher() const { return launcher_; }
    pid_t process() const { return bus_; }
    pid_t registry() const { return registry_; }

    /// Takes the accessibility bus from its clients. `start` has the session bus start another one.
    void stop();
    void start();

private:
    std::string sessionAddress_;
    std::string address_;
    pid_t session_ = -1;
    pid_t launcher_ = -1; // which belongs to the session bus
    pid_t bus_ = -1;
    pid_t registry_ = -1;
};

/// Calls a method on a bus and gives its reply. Throws without one.
GioPointer<GVariant> callOnBus(GDBusConnection* connection, const char* program, const char* path,
                               const char* interface, const char* method, GVariant* arguments);

} // namespace tavel
