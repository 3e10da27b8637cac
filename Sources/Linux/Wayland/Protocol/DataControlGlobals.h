#pragma once

#include "Linux/Wayland/Protocol/DataControlInterfaces.h"
#include "Linux/Wayland/Protocol/WaylandDisplay.h"

#include <cstdint>

namespace tavel {

/// What data control needs of the objects that a compositor announces in its registry.
class DataControlGlobals {
public:
    /// Asks for the registry. It is complete when the compositor has answered another question.
    explicit DataControlGlobals(WaylandDisplay& display);
    ~DataControlGlobals() = default;
    DataControlGlobals(const DataControlGlobals&) = delete; // the registry's events come to this object
    DataControlGlobals& operator=(const DataControlGlobals&) = delete;

    /// What the compositor lacks, a constant: "offers no data control"; null if nothing.
    const char* missing() const;

    /// If nothing is missing: the better protocol.
    const DataControlInterfaces& interfaces() const;

    /// Null if the compositor takes no request now, or for want of memory.
    Proxy bindManager();
    Proxy bindSeat();

private:
    struct Global {
        std::uint32_t name = 0;
        std::uint32_t version = 0; // from 1 on

        bool isThere() const { return version > 0; }
    };

    void handleRegistry(wl_proxy* registry, std::uint32_t event, const wl_argument* arguments);
    Proxy bind(const Global& global, const wl_interface& interface);

    WaylandDisplay& display_;
    Global ext_;
    Global wlr_;
    Global seat_; // the first
    Proxy registry_;
};

} // namespace tavel
