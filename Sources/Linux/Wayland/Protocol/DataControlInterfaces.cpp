#include "Linux/Wayland/Protocol/DataControlInterfaces.h"

#include <array>
#include <span>

extern "C" const wl_interface wl_seat_interface; // libwayland's, both the client's and the server's

namespace tavel {
namespace {

/// A list of types names the interface of each argument that is an object. libwayland takes it as a pointer
/// to what could be changed, but does not change it.
using Types = std::array<const wl_interface*, 2>;

constexpr wl_interface describe(const char* name, int version, std::span<const wl_message> requests,
                                std::span<const wl_message> events) {
    return {name,
            version,
            static_cast<int>(requests.size()),
            requests.data(),
            static_cast<int>(events.size()),
            events.data()};
}

struct Names {
    const char* manager;
    const char* device;
    const char* source;
    const char* offer;
};

/// The messages stand in the order of their numbers. A signature begins with the version that added the
/// message, unless it is the first.
class Description {
public:
    constexpr Description(const Names& names, int version, const char* primarySignature)
        : managerRequests_{{{"create_data_source", "n", sourceType_.data()},
                            {"get_data_device", "no", deviceAndSeatTypes_.data()},
                            {"destroy", "", noTypes_.data()}}},
          deviceRequests_{{{"set_selection", "?o", sourceType_.data()},
                           {"destroy", "", noTypes_.data()},
                           {"set_primary_selection", primarySignature, sourceType_.data()}}},
          deviceEvents_{{{"data_offer", "n", offerType_.data()},
                         {"selection", "?o", offerType_.data()},
                         {"finished", "", noTypes_.data()},
                         {"primary_selection", primarySignature, offerType_.data()}}},
          sourceRequests_{{{"offer", "s", noTypes_.data()}, {"destroy", "", noTypes_.data()}}},
          sourceEvents_{{{"send", "sh", noTypes_.data()}, {"cancelled", "", noTypes_.data()}}},
          offerRequests_{{{"receive", "sh", noTypes_.data()}, {"destroy", "", noTypes_.data()}}},
          offerEvents_{{{"offer", "s", noTypes_.data()}}},
          interfaces_{describe(names.manager, version, managerRequests_, {}),
                      describe(names.device, version, deviceRequests_, deviceEvents_),
                      describe(names.source, version, sourceRequests_, sourceEvents_),
                      describe(names.offer, version, offerRequests_, offerEvents_)} {}
    Description(const Description&) = delete; // its parts point at each other
    Description& operator=(const Description&) = delete;
    ~Description() = default;

    const DataControlInterfaces& interfaces() const { return interfaces_; }

private:
    Types noTypes_{};
    Types sourceType_{&interfaces_.source};
    Types offerType_{&interfaces_.offer};
    Types deviceAndSeatTypes_{&interfaces_.device, &wl_seat_interface};
    std::array<wl_message, 3> managerRequests_;
    std::array<wl_message, 3> deviceRequests_;
    std::array<wl_message, 4> deviceEvents_;
    std::array<wl_message, 2> sourceRequests_;
    std::array<wl_message, 2> sourceEvents_;
    std::array<wl_message, 2> offerRequests_;
    std::array<wl_message, 1> offerEvents_;
    DataControlInterfaces interfaces_;
};

constinit Description ext({"ext_data_control_manager_v1", "ext_data_control_device_v1",
                           "ext_data_control_source_v1", "ext_data_control_offer_v1"},
                          1, "?o");
constinit Description wlr({"zwlr_data_control_manager_v1", "zwlr_data_control_device_v1",
                           "zwlr_data_control_source_v1", "zwlr_data_control_offer_v1"},
                          2, "2?o");

} // namespace

const DataControlInterfaces& extDataControl() {
    return ext.interfaces();
}

const DataControlInterfaces& wlrDataControl() {
    return wlr.interfaces();
}

} // namespace tavel
