#pragma once

#include "Linux/Base/Descriptor.h"
#include "Linux/Wayland/DataControlModule.h"
#include "Linux/Wayland/Protocol/DataControlInterfaces.h"
#include "Linux/Wayland/Protocol/OfferedTypes.h"
#include "Linux/Wayland/Protocol/WaylandDisplay.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tavel {

/// What the module's functions do, which `DataControlModule` describes. Those that are not said to do so do
/// not throw.
class DataControlConnection {
public:
    using Clock = WaylandDisplay::Clock;

    /// Throws std::bad_alloc.
    static std::unique_ptr<DataControlConnection> open(Descriptor socket, Clock::time_point deadline,
                                                       const DataControlEvents& events, const char*& fault);

    const char* protocol() const { return interfaces_->manager.name; }
    bool hasPrimary() const;
    int descriptor() const { return display_.descriptor(); }
    bool isLost() const { return display_.isLost(); }
    bool dispatch();
    bool flush() { return display_.flush(); }

    /// Throws std::bad_alloc.
    std::uint64_t select(WaylandSelectionKind kind, const std::vector<std::string>& types);
    void withdraw(std::uint64_t source);
    bool receive(std::uint64_t offer, const std::string& type, int descriptor);
    /// Throws std::bad_alloc.
    std::uint64_t ask();

private:
    struct UnclaimedOffer {
        Proxy proxy;
        OfferedTypes types;
    };

    /// An offer that is the content of a selection, a source, or a question.
    struct Numbered {
        Proxy proxy;
        std::uint64_t number = 0;
    };

    DataControlConnection(Descriptor socket, const DataControlEvents& events);
    const char* bind(Clock::time_point deadline);
    const char* faultOfSilence() const;
    bool awaitAnswer(Clock::time_point deadline);
    bool sendQuestion(std::uint64_t number);
    Proxy makeSource(const std::vector<std::string>& types, Clock::time_point deadline);

    void handleDevice(wl_proxy* device, std::uint32_t event, const wl_argument* arguments);
    void handleOffer(wl_proxy* offer, std::uint32_t event, const wl_argument* arguments);
    void handleSource(wl_proxy* source, std::uint32_t event, const wl_argument* arguments);
    void handleCallback(wl_proxy* callback, std::uint32_t event, const wl_argument* arguments);
    void keepOffer(wl_proxy* offer);
    void handleSelection(WaylandSelectionKind kind, wl_proxy* offer);

    WaylandDisplay display_;
    DataControlEvents events_;
    const DataControlInterfaces* interfaces_ = nullptr;
    Proxy manager_;
    Proxy device_;
    std::array<UnclaimedOffer, 2> unclaimed_; // the older one second
    std::array<Numbered, 2> selections_;
    std::vector<Numbered> sources_;
    std::vector<Numbered> questions_;
    std::uint64_t lastOffer_ = 0;
    std::uint64_t lastSource_ = 0;
    std::uint64_t lastQuestion_ = 0;
    bool isAnswered_ = false; // the question of `awaitAnswer` is answered
};

} // namespace tavel
