#include "Tests/Wayland/Seat.h"

#include "Tests/Wayland/Resource.h"

#include <wayland-server-protocol.h>

#include <cstdint>
#include <memory>
#include <stdexcept>

namespace tavel {

namespace {

constexpr int version = 5;

struct Seat {};

void refuseDevice(wl_client*, wl_resource* seat, std::uint32_t) {
    wl_resource_post_error(seat, WL_SEAT_ERROR_MISSING_CAPABILITY, "This seat has no devices.");
}

const struct wl_seat_interface requests {
    refuseDevice, refuseDevice, refuseDevice, destroyResource
};

void bind(wl_client* client, void*, std::uint32_t boundVersion, std::uint32_t number) {
    wl_resource* const seat = makeResource(client, ::wl_seat_interface, static_cast<int>(boundVersion),
                                           number, &requests, std::make_unique<Seat>());
    if (seat == nullptr)
        return;
    wl_seat_send_capabilities(seat, 0);
    if (boundVersion >= WL_SEAT_NAME_SINCE_VERSION)
        wl_seat_send_name(seat, "seat0");
}

} // namespace

void offerSeat(wl_display* display) {
    if (wl_global_create(display, &::wl_seat_interface, version, nullptr, bind) == nullptr)
        throw std::runtime_error("The compositor cannot offer a seat.");
}

} // namespace tavel
