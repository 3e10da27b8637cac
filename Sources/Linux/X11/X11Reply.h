#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>

namespace tavel {

struct X11Free {
    void operator()(void* memory) const { std::free(memory); }
};

/// A reply, an event or an error, which xcb hands over in memory from malloc.
template <typename Kind>
using X11Reply = std::unique_ptr<Kind, X11Free>;

/// Waits for the reply to a request; null if the request failed or the server is lost. `fetch` is the xcb
/// function that gives the reply. xcb frees the error of a failed request, unless the request was made by an
/// "_unchecked" function: only then does the error come as an event.
template <typename Reply, typename Cookie>
X11Reply<Reply> awaitReply(xcb_connection_t* connection, Cookie cookie,
                           Reply* (*fetch)(xcb_connection_t*, Cookie, xcb_generic_error_t**)) {
    return X11Reply<Reply>(fetch(connection, cookie, nullptr));
}

/// Waits for the reply to the request of that number. Null if the request failed or the server is lost. The
/// caller frees the reply.
using ReplyWaiter = std::function<void*(std::uint32_t requestNumber)>;

/// Waits as `wait` does. The xcb function for the reply only tells its kind.
template <typename Reply, typename Cookie>
X11Reply<Reply> awaitReply(const ReplyWaiter& wait, Cookie cookie,
                           Reply* (*)(xcb_connection_t*, Cookie, xcb_generic_error_t**)) {
    return X11Reply<Reply>(static_cast<Reply*>(wait(cookie.sequence)));
}

} // namespace tavel
