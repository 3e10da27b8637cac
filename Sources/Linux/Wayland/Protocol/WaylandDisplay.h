#pragma once

#include "Linux/Base/Descriptor.h"

#include <wayland-client-core.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace tavel {

struct DestroyProxy {
    void operator()(wl_proxy* proxy) const { wl_proxy_destroy(proxy); }
};

/// An object of the protocol, forgotten without a word to the compositor. Ends before its display.
using Proxy = std::unique_ptr<wl_proxy, DestroyProxy>;

/// Calls that function of the object for each event of the proxy. The function must not throw: libwayland's
/// C code calls it.
template <auto handle, typename Object>
void listen(wl_proxy* proxy, Object& object) {
    const auto dispatch = [](const void* receiver, void* target, std::uint32_t event, const wl_message*,
                             wl_argument* arguments) noexcept {
        auto& handler = *const_cast<Object*>(static_cast<const Object*>(receiver));
        (handler.*handle)(static_cast<wl_proxy*>(target), event, arguments);
        return 0;
    };
    wl_proxy_add_dispatcher(proxy, dispatch, &object, nullptr);
}

/// A connection to a compositor. libwayland gives a connection up when a request finds no room, neither in
/// the library's buffer nor in the socket. This keeps count, so that such a request is not made. One thread.
class WaylandDisplay {
public:
    using Clock = std::chrono::steady_clock;

    /// Throws std::bad_alloc.
    explicit WaylandDisplay(Descriptor socket);
    ~WaylandDisplay();
    WaylandDisplay(const WaylandDisplay&) = delete;
    WaylandDisplay& operator=(const WaylandDisplay&) = delete;

    /// For requests to the display itself, each after `reserveRequest`.
    wl_display* library() const { return display_; }
    int descriptor() const { return wl_display_get_fd(display_); }

    bool isLost() const { return isGivenUp_ || wl_display_get_error(display_) != 0; }
    void giveUp() { isGivenUp_ = true; }

    /// Makes room for one request, which has a string of `pasteboardType::longestNameBytes` bytes at most.
    /// False if the compositor takes no more now, or the connection is lost.
    bool reserveRequest();

    /// The same, but waits until the compositor takes more.
    bool reserveRequest(Clock::time_point deadline);

    /// Sends the requests. False if the compositor takes no more now.
    bool flush();

    /// Destroys a data source or an offer, as soon as the compositor takes the request. Does not throw.
    void destroySoon(Proxy proxy);

    /// Reads what has arrived, a few kilobytes at most, and handles it. False if nothing has, or the
    /// connection is lost.
    bool takeIn();

    /// Waits until something arrives, and handles it. False at the deadline, or if the connection is lost.
    bool awaitEvents(Clock::time_point deadline);

private:
    bool send();
    void sendDestructions();
    bool poll(short conditions, Clock::time_point deadline) const;

    wl_display* display_;
    std::size_t unsentRequests_ = 0; // since the buffer was empty
    bool isBlocked_ = false;         // the compositor did not take all
    bool isGivenUp_ = false;
    wl_proxy* toDestroy_ = nullptr; // a chain: each one's user data is the next, so that it costs no memory
};

} // namespace tavel
