#include "Tests/Wayland/ScriptedClient.h"

#include <fcntl.h>
#include <unistd.h>
#include <wayland-client-protocol.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace tavel {

using Kind = WaylandSelectionKind;

ScriptedClient::ScriptedClient(const std::string& display, const DataControlInterfaces& protocol)
    : protocol_(protocol), connection_(wl_display_connect(display.c_str())) {
    if (connection_ == nullptr)
        throw std::runtime_error("Nobody listens at " + display);
    registry_ = keep(reinterpret_cast<wl_proxy*>(wl_display_get_registry(connection_)));
    wl_display_roundtrip(connection_);
    const auto found = globals_.find(protocol_.manager.name);
    if (found == globals_.end() || !globals_.contains(wl_seat_interface.name))
        return;
    const std::uint32_t version = found->second;
    wl_proxy* const seat = bind(wl_seat_interface, 1);
    manager_ = bind(protocol_.manager, version);
    device_ = keep(wl_proxy_marshal_flags(manager_, dataControl::managerRequest::getDataDevice,
                                          &protocol_.device, version, 0, nullptr, seat));
}

ScriptedClient::~ScriptedClient() {
    for (wl_proxy* const proxy : proxies_)
        wl_proxy_destroy(proxy);
    wl_display_disconnect(connection_);
}

std::vector<std::string> ScriptedClient::takeEvents() {
    wl_display_roundtrip(connection_);
    return std::exchange(events_, {});
}

std::uint32_t ScriptedClient::takeError() {
    wl_display_roundtrip(connection_);
    if (wl_display_get_error(connection_) != EPROTO)
        return 0;
    return wl_display_get_protocol_error(connection_, nullptr, nullptr);
}

wl_proxy* ScriptedClient::makeSource(const std::vector<std::string>& types) {
    wl_proxy* const source =
        keep(wl_proxy_marshal_flags(manager_, dataControl::managerRequest::createDataSource,
                                    &protocol_.source, wl_proxy_get_version(manager_), 0, nullptr));
    for (const std::string& type : types)
        wl_proxy_marshal_flags(source, dataControl::sourceRequest::offer, nullptr,
                               wl_proxy_get_version(source), 0, type.c_str());
    return source;
}

void ScriptedClient::destroySource(wl_proxy* source) {
    std::erase(proxies_, source);
    wl_proxy_marshal_flags(source, dataControl::sourceRequest::destroy, nullptr, wl_proxy_get_version(source),
                           WL_MARSHAL_FLAG_DESTROY);
}

void ScriptedClient::select(Kind kind, wl_proxy* source) {
    wl_proxy_marshal_flags(device_,
                           kind == Kind::clipboard ? dataControl::deviceRequest::setSelection
                                                   : dataControl::deviceRequest::setPrimarySelection,
                           nullptr, wl_proxy_get_version(device_), 0, source);
}

Descriptor ScriptedClient::receive(wl_proxy* offer, const std::string& type) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    Descriptor readEnd(ends[0]);
    const Descriptor writeEnd(ends[1]);
    wl_proxy_marshal_flags(offer, dataControl::offerRequest::receive, nullptr, wl_proxy_get_version(offer), 0,
                           type.c_str(), writeEnd.number());
    wl_display_roundtrip(connection_);
    return readEnd;
}

wl_proxy* ScriptedClient::bind(const wl_interface& interface, std::uint32_t version) {
    return keep(static_cast<wl_proxy*>(wl_registry_bind(
        reinterpret_cast<wl_registry*>(registry_), globalNumbers_.at(interface.name), &interface, version)));
}

wl_proxy* ScriptedClient::keep(wl_proxy* proxy) {
    wl_proxy_add_dispatcher(proxy, dispatch, this, nullptr);
    proxies_.push_back(proxy);
    return proxy;
}

int ScriptedClient::dispatch(const void* client, void* proxy, std::uint32_t event, const wl_message*,
                             wl_argument* arguments) {
    auto* const self = static_cast<ScriptedClient*>(const_cast<void*>(client));
    self->handle(static_cast<wl_proxy*>(proxy), event, arguments);
    return 0;
}

void ScriptedClient::handle(wl_proxy* proxy, std::uint32_t event, const wl_argument* arguments) {
    const std::string_view interface = wl_proxy_get_class(proxy);
    if (proxy == registry_ && event == 0) { // global
        globalNumbers_[arguments[1].s] = arguments[0].u;
        globals_[arguments[1].s] = arguments[2].u;
    } else if (interface == protocol_.device.name) {
        handleDeviceEvent(event, arguments);
    } else if (interface == protocol_.offer.name) {
        types_[proxy] += ' ' + std::string(arguments[0].s);
    } else if (interface == protocol_.source.name && event == dataControl::sourceEvent::cancelled) {
        events_.emplace_back("cancelled");
    } else if (interface == protocol_.source.name) {
        close(arguments[1].h);
        events_.push_back("send " + std::string(arguments[0].s));
    }
}

void ScriptedClient::handleDeviceEvent(std::uint32_t event, const wl_argument* arguments) {
    auto* const offer = reinterpret_cast<wl_proxy*>(arguments[0].o);
    if (event == dataControl::deviceEvent::dataOffer)
        keep(offer);
    else if (event == dataControl::deviceEvent::finished)
        events_.emplace_back("finished");
    else
        noteSelection(event == dataControl::deviceEvent::selection ? Kind::clipboard : Kind::primary, offer);
}

void ScriptedClient::noteSelection(Kind kind, wl_proxy* offer) {
    offers_.at(static_cast<std::size_t>(kind)) = offer;
    events_.push_back((kind == Kind::clipboard ? "clipboard:" : "primary:") +
                      (offer != nullptr ? types_[offer] : " none"));
}

} // namespace tavel
