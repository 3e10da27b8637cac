#include "Linux/Wayland/Protocol/WaylandDisplay.h"

#include "Linux/Wayland/Protocol/DataControlInterfaces.h"
#include "Platform/PasteboardTypes.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <limits>
#include <new>
#include <utility>

namespace tavel {
namespace {

/// The buffer of libwayland, and its longest request here: a header, and a string with its length and end.
constexpr std::size_t bufferBytes = 4096;
constexpr std::size_t longestRequestBytes = 8 + 4 + (pasteboardType::longestNameBytes + 1);
static_assert((pasteboardType::longestNameBytes + 1) % 4 == 0, "strings fill whole words");

/// Each of them may send a descriptor: libwayland holds 28.
constexpr std::size_t mostUnsentRequests = bufferBytes / longestRequestBytes;
static_assert(mostUnsentRequests <= 28);

static_assert(dataControl::sourceRequest::destroy == dataControl::offerRequest::destroy);
constexpr std::uint32_t destroyRequest = dataControl::sourceRequest::destroy;

/// libwayland would write to the standard error.
void ignoreMessage(const char* /*format*/, va_list /*arguments*/) {}

} // namespace

WaylandDisplay::WaylandDisplay(Descriptor socket) {
    wl_log_set_handler_client(ignoreMessage);
    display_ = wl_display_connect_to_fd(socket.release()); // closes it if it fails
    if (display_ == nullptr)
        throw std::bad_alloc();
}

WaylandDisplay::~WaylandDisplay() {
    while (toDestroy_ != nullptr)
        wl_proxy_destroy(
            std::exchange(toDestroy_, static_cast<wl_proxy*>(wl_proxy_get_user_data(toDestroy_))));
    wl_display_disconnect(display_);
}

bool WaylandDisplay::reserveRequest() {
    if (isLost())
        return false;
    if ((isBlocked_ || unsentRequests_ == mostUnsentRequests) && !send())
        return false;
    ++unsentRequests_;
    return true;
}

bool WaylandDisplay::reserveRequest(Clock::time_point deadline) {
    while (!reserveRequest())
        if (isLost() || !isBlocked_ || !poll(POLLOUT, deadline))
            return false;
    return true;
}

bool WaylandDisplay::flush() {
    sendDestructions();
    if (!isLost())
        send();
    return !isBlocked_ || isLost();
}

/// Empties libwayland's buffer. False if that fails. A broken connection is not lost yet: it may still have
/// something to read.
bool WaylandDisplay::send() {
    const bool isSent = wl_display_flush(display_) >= 0;
    isBlocked_ = !isSent && errno == EAGAIN;
    if (isSent)
        unsentRequests_ = 0;
    return isSent;
}

void WaylandDisplay::destroySoon(Proxy proxy) {
    if (proxy == nullptr)
        return;
    wl_proxy_set_user_data(proxy.get(), toDestroy_);
    toDestroy_ = proxy.release();
    sendDestructions();
}

void WaylandDisplay::sendDestructions() {
    while (toDestroy_ != nullptr && reserveRequest()) {
        wl_proxy* const proxy = toDestroy_;
        toDestroy_ = static_cast<wl_proxy*>(wl_proxy_get_user_data(proxy));
        wl_proxy_marshal_flags(proxy, destroyRequest, nullptr, wl_proxy_get_version(proxy),
                               WL_MARSHAL_FLAG_DESTROY);
    }
}

bool WaylandDisplay::takeIn() {
    while (!isLost() && wl_display_prepare_read(display_) != 0)
        wl_display_dispatch_pending(display_);
    if (isLost())
        return false;
    if (!poll(POLLIN, Clock::time_point::min())) {
        wl_display_cancel_read(display_);
        return false;
    }
    wl_display_read_events(display_);
    wl_display_dispatch_pending(display_);
    return !isLost();
}

bool WaylandDisplay::awaitEvents(Clock::time_point deadline) {
    const bool isSent = flush();
    if (!poll(static_cast<short>(isSent ? POLLIN : POLLIN | POLLOUT), deadline))
        return false;
    takeIn();
    return !isLost();
}

/// Waits for one of these conditions, or an error, until the deadline. False if none has come.
bool WaylandDisplay::poll(short conditions, Clock::time_point deadline) const {
    pollfd watched{descriptor(), conditions, 0};
    while (true) {
        const auto now = Clock::now();
        const auto wait =
            deadline > now ? std::chrono::ceil<std::chrono::milliseconds>(deadline - now).count() : 0;
        const int found = ::poll(
            &watched, 1, static_cast<int>(std::min<std::int64_t>(wait, std::numeric_limits<int>::max())));
        if (found >= 0 || errno != EINTR)
            return found > 0;
    }
}

} // namespace tavel
