#include "Linux/Wayland/Protocol/DataControlGlobals.h"

#include <wayland-client-protocol.h>

#include <algorithm>
#include <string_view>

namespace tavel {
namespace {

constexpr std::uint32_t globalEvent = 0; // of wl_registry

/// Of the seat, nothing but its being there is needed.
constexpr std::uint32_t seatVersion = 1;

} // namespace

DataControlGlobals::DataControlGlobals(WaylandDisplay& display) : display_(display) {
    if (!display_.reserveRequest())
        return;
    registry_.reset(reinterpret_cast<wl_proxy*>(wl_display_get_registry(display_.library())));
    if (registry_ != nullptr)
        listen<&DataControlGlobals::handleRegistry>(registry_.get(), *this);
}

void DataControlGlobals::handleRegistry(wl_proxy* /*registry*/, std::uint32_t event,
                                        const wl_argument* arguments) {
    if (event != globalEvent)
        return;
    const Global global{arguments[0].u, arguments[2].u};
    const std::string_view interface = arguments[1].s;
    if (interface == extDataControl().manager.name)
        ext_ = global;
    else if (interface == wlrDataControl().manager.name)
        wlr_ = global;
    else if (interface == wl_seat_interface.name && !seat_.isThere())
        seat_ = global;
}

const char* DataControlGlobals::missing() const {
    if (!ext_.isThere() && !wlr_.isThere())
        return "offers no data control (ext-data-control-v1 or wlr-data-control-unstable-v1)";
    return seat_.isThere() ? nullptr : "has no seat, to which a clipboard belongs";
}

const DataControlInterfaces& DataControlGlobals::interfaces() const {
    return ext_.isThere() ? extDataControl() : wlrDataControl();
}

Proxy DataControlGlobals::bindManager() {
    const Global global = ext_.isThere() ? ext_ : wlr_;
    const wl_interface& manager = interfaces().manager;
    return bind({global.name, std::min(global.version, static_cast<std::uint32_t>(manager.version))},
                manager);
}

Proxy DataControlGlobals::bindSeat() {
    return bind({seat_.name, seatVersion}, wl_seat_interface);
}

Proxy DataControlGlobals::bind(const Global& global, const wl_interface& interface) {
    if (!display_.reserveRequest())
        return nullptr;
    auto* const registry = reinterpret_cast<wl_registry*>(registry_.get());
    return Proxy(static_cast<wl_proxy*>(wl_registry_bind(registry, global.name, &interface, global.version)));
}

} // namespace tavel
