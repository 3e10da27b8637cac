#pragma once

#include "Linux/Base/Descriptor.h"
#include "Linux/Wayland/DataControlModule.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tavel {

/// The connection to a Wayland compositor that offers data control. Loads the module that speaks with it. One
/// thread, but for `expectEnd`.
class WaylandConnection {
public:
    using Clock = std::chrono::steady_clock;
    using Log = std::function<void(const std::string& message)>;

    /// Connects to the compositor of that name: a socket in XDG_RUNTIME_DIR, or an absolute path. Null if
    /// none answers there within some seconds, or offers data control; `refusal`, if that is not null, is a
    /// clause for people that says why then. The log says so, too, if it is the module's fault. Events may
    /// come during this call.
    static std::unique_ptr<WaylandConnection> open(const std::string& display,
                                                   const DataControlEvents& events,
                                                   const std::filesystem::path& module, const Log& log,
                                                   std::string* refusal = nullptr);

    ~WaylandConnection() { module_.destroy(&connection_); }
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    /// The process is about to end: from now on, a wait gives up after a second. Any thread.
    void expectEnd() const;

    // As DataControlModule says.
    const char* protocol() const { return module_.protocol(connection_); }
    bool hasPrimary() const { return module_.hasPrimary(connection_); }
    int descriptor() const { return module_.descriptor(connection_); }
    bool isLost() const { return module_.isLost(connection_); }
    void dispatch();
    bool flush() { return module_.flush(connection_); }
    std::uint64_t select(WaylandSelectionKind kind, const std::vector<std::string>& types) {
        return module_.select(connection_, kind, types);
    }
    void withdraw(std::uint64_t source) { module_.withdraw(connection_, source); }
    bool receive(std::uint64_t offer, const std::string& type, int descriptor) {
        return module_.receive(connection_, offer, type, descriptor);
    }
    std::uint64_t ask() { return module_.ask(connection_); }

    /// Dispatches events until `isOver`. Gives up when the connection is lost, and after some seconds. A
    /// compositor that has let them pass is not waited for again before it sends something.
    void dispatchUntil(const std::function<bool()>& isOver);

private:
    WaylandConnection(const DataControlModule& module, DataControlConnection& connection);

    bool waitForEvents(Clock::time_point deadline);

    const DataControlModule& module_;
    DataControlConnection& connection_;
    Descriptor endExpected_;
    bool endIsExpected_ = false;
    bool isSilent_ = false;
};

} // namespace tavel
