#pragma once

#include <wayland-util.h>

#include <cstdint>

namespace tavel {

/// The interfaces of a protocol for data control, as libwayland wants to have them described. They are the
/// same for a client and for a compositor.
struct DataControlInterfaces {
    wl_interface manager;
    wl_interface device;
    wl_interface source;
    wl_interface offer;
};

/// The two protocols differ in the names of their interfaces only, and in the version that added the primary
/// selection. Both live as long as the process. Any thread.
/// ext-data-control-v1, version 1, of wayland-protocols 1.39.
const DataControlInterfaces& extDataControl();
/// wlr-data-control-unstable-v1, version 2, of wlr-protocols.
const DataControlInterfaces& wlrDataControl();

/// The numbers of requests and events, which are the same in both protocols.
namespace dataControl {

namespace managerRequest {
inline constexpr std::uint32_t createDataSource = 0;
inline constexpr std::uint32_t getDataDevice = 1;
inline constexpr std::uint32_t destroy = 2;
} // namespace managerRequest

namespace deviceRequest {
inline constexpr std::uint32_t setSelection = 0;
inline constexpr std::uint32_t destroy = 1;
inline constexpr std::uint32_t setPrimarySelection = 2;
} // namespace deviceRequest

namespace deviceEvent {
inline constexpr std::uint32_t dataOffer = 0;
inline constexpr std::uint32_t selection = 1;
inline constexpr std::uint32_t finished = 2;
inline constexpr std::uint32_t primarySelection = 3;
} // namespace deviceEvent

namespace sourceRequest {
inline constexpr std::uint32_t offer = 0;
inline constexpr std::uint32_t destroy = 1;
} // namespace sourceRequest

namespace sourceEvent {
inline constexpr std::uint32_t send = 0;
inline constexpr std::uint32_t cancelled = 1;
} // namespace sourceEvent

namespace offerRequest {
inline constexpr std::uint32_t receive = 0;
inline constexpr std::uint32_t destroy = 1;
} // namespace offerRequest

namespace offerEvent {
inline constexpr std::uint32_t offer = 0;
} // namespace offerEvent

} // namespace dataControl
} // namespace tavel
