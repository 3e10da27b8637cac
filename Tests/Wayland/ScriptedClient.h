#pragma once

#include "Linux/Base/Descriptor.h"
#include "Linux/Wayland/DataControlModule.h"
#include "Linux/Wayland/Protocol/DataControlInterfaces.h"

#include <wayland-client-core.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tavel {

/// A client that speaks data control request by request, and notes each event. One thread.
class ScriptedClient {
public:
    /// Binds the protocol's manager, and a device, where the compositor offers them. Throws
    /// std::runtime_error if nobody listens.
    ScriptedClient(const std::string& display, const DataControlInterfaces& protocol);
    ~ScriptedClient();
    ScriptedClient(const ScriptedClient&) = delete;
    ScriptedClient& operator=(const ScriptedClient&) = delete;

    /// What the compositor offers: the interfaces' names and versions.
    const std::map<std::string, std::uint32_t>& globals() const { return globals_; }

    /// Sends the requests so far, and waits for nothing.
    void flush() { wl_display_flush(connection_); }

    /// The events since the last call, up to the compositor's answer to a question. "clipboard: a b" and
    /// "primary: a b" give the types of an offer, "none" stands for no content.
    std::vector<std::string> takeEvents();

    /// The number of the error for which the compositor has disconnected this client; 0 if there is none.
    std::uint32_t takeError();

    /// Lives as long as the client.
    wl_proxy* makeSource(const std::vector<std::string>& types);
    void destroySource(wl_proxy* source);
    void select(WaylandSelectionKind kind, wl_proxy* source);

    /// The latest offer for the selection, or null.
    wl_proxy* offer(WaylandSelectionKind kind) const { return offers_.at(static_cast<std::size_t>(kind)); }

    /// Gives the read end of a pipe.
    Descriptor receive(wl_proxy* offer, const std::string& type);

private:
    wl_proxy* bind(const wl_interface& interface, std::uint32_t version);
    wl_proxy* keep(wl_proxy* proxy);
    static int dispatch(const void* client, void* proxy, std::uint32_t event, const wl_message* message,
                        wl_argument* arguments);
    void handle(wl_proxy* proxy, std::uint32_t event, const wl_argument* arguments);
    void handleDeviceEvent(std::uint32_t event, const wl_argument* arguments);
    void noteSelection(WaylandSelectionKind kind, wl_proxy* offer);

    const DataControlInterfaces& protocol_;
    wl_display* connection_;
    wl_proxy* registry_ = nullptr;
    wl_proxy* manager_ = nullptr;
    wl_proxy* device_ = nullptr;
    std::vector<wl_proxy*> proxies_;
    std::map<std::string, std::uint32_t> globals_;
    std::map<std::string, std::uint32_t> globalNumbers_;
    std::map<wl_proxy*, std::string> types_; // of each offer, with a space before each
    std::array<wl_proxy*, 2> offers_{};
    std::vector<std::string> events_;
};

} // namespace tavel
