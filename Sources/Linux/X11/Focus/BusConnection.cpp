#include "Linux/X11/Focus/BusConnection.h"

#include "Linux/X11/Focus/BusStream.h"

#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

namespace tavel {

namespace {

using Clock = BusConnection::Clock;

/// Cancels an operation of another thread at `end`, unless this object is destroyed before.
class CallOff {
public:
    CallOff(GCancellable* cancellable, Clock::time_point end)
        : thread_([this, cancellable, end](const std::stop_token& stop) {
              std::unique_lock lock(mutex_);
              sleeping_.wait_until(lock, stop, end, [] { return false; });
              if (!stop.stop_requested())
                  g_cancellable_cancel(cancellable);
          }) {}

private:
    std::mutex mutex_;
    std::condition_variable_any sleeping_;
    std::jthread thread_; // the last member, because the thread uses the others
};

} // namespace

std::unique_ptr<BusConnection> BusConnection::open(const std::string& address, Clock::time_point end) {
    const GioPointer<GCancellable> cancellable(g_cancellable_new());
    const CallOff callOff(cancellable.get(), end);
    const GioPointer<GIOStream> stream = openBusStream(address, cancellable.get());
    if (stream == nullptr)
        return nullptr;
    // Unlike GIO's shared connection, a private one does not end the process when the bus is lost.
    GioPointer<GDBusConnection> connection(
        g_dbus_connection_new_sync(stream.get(), nullptr, G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION,
                                   nullptr, cancellable.get(), nullptr));
    if (connection == nullptr)
        return nullptr;
    return std::unique_ptr<BusConnection>(new BusConnection(std::move(connection)));
}

BusConnection::BusConnection(GioPointer<GDBusConnection> connection) : connection_(std::move(connection)) {}

BusConnection::~BusConnection() {
    // Without waiting, as a bus that hangs would block the last writes.
    g_dbus_connection_close(connection_.get(), nullptr, nullptr, nullptr);
}

GioPointer<GVariant> BusConnection::call(const BusObject& object, const char* method, GVariant* arguments,
                                         const char* replyType, Clock::time_point end,
                                         const std::stop_token& stop) const {
    const GioPointer<GVariant> owned(arguments == nullptr ? nullptr : g_variant_ref_sink(arguments));
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (wait.count() <= 0)
        return nullptr;
    const GioPointer<GCancellable> cancellable(g_cancellable_new());
    const std::stop_callback callOff(stop, [&cancellable] { g_cancellable_cancel(cancellable.get()); });
    return GioPointer<GVariant>(
        g_dbus_connection_call_sync(connection_.get(), object.program, object.path, object.interface, method,
                                    owned.get(), G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE,
                                    static_cast<int>(wait.count()), cancellable.get(), nullptr));
}

std::optional<std::int32_t> BusConnection::processOf(const std::string& program,
                                                     Clock::time_point end) const {
    const auto reply = call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"},
                            "GetConnectionUnixProcessID", g_variant_new("(s)", program.c_str()), "(u)", end);
    if (reply == nullptr)
        return std::nullopt;
    std::uint32_t process = 0;
    g_variant_get(reply.get(), "(u)", &process);
    return static_cast<std::int32_t>(process);
}

std::optional<std::string> sessionBusAddress() {
    // The rules of D-Bus for well-known message buses. GIO's own function would start a bus if there is none.
    if (const char* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        address != nullptr && *address != '\0') {
        if (std::string_view(address).find("autolaunch:") != std::string_view::npos)
            return std::nullopt;
        return address;
    }
    const char* const runtimeDirectory = std::getenv("XDG_RUNTIME_DIR");
    if (runtimeDirectory == nullptr || *runtimeDirectory != '/')
        return std::nullopt;
    const std::filesystem::path socket = std::filesystem::path(runtimeDirectory) / "bus";
    std::error_code error;
    if (!std::filesystem::is_socket(socket, error))
        return std::nullopt;
    const GioPointer<char> escaped(g_dbus_address_escape_value(socket.c_str()));
    return std::string("unix:path=") + escaped.get();
}

} // namespace tavel
