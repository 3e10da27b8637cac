#pragma once

#include "Linux/Selections/OwnerQuestions.h"
#include "Linux/Wayland/PipeReader.h"
#include "Linux/Wayland/WaylandConnection.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavel {

/// What the owner of a selection offers. Number 0: there is no owner.
struct WaylandOffer {
    std::uint64_t number = 0;
    std::vector<std::string> targets;
};

/// Asks the owner of a selection that a compositor passes on. Its targets come with each offer.
class WaylandOwnerQuestions final : public OwnerQuestions {
public:
    /// These objects must outlive this one. The offer is the present one, whichever that is.
    WaylandOwnerQuestions(const WaylandConnection& connection, PipeReader& reader,
                          std::shared_ptr<const WaylandOffer> offer)
        : connection_(connection), reader_(reader), offer_(std::move(offer)) {}

    bool isLost() const override { return connection_.isLost(); }
    void prepare() override {}
    Ticket askForTargets() override { return targetsTicket; }
    Ticket ask(const std::string& target, std::size_t limit) override {
        return reader_.ask({offer_->number, target, limit});
    }
    bool isDecided(Ticket ticket) const override {
        return ticket == targetsTicket || reader_.isDecided(ticket);
    }
    bool hasTimedOut(Ticket ticket) const override { return reader_.hasTimedOut(ticket); }
    std::vector<std::string> takeTargets(Ticket) override { return offer_->targets; }
    std::optional<SelectionValue> take(Ticket ticket, const std::string& target) override;

private:
    static constexpr Ticket targetsTicket = 0; // none of the reader's

    const WaylandConnection& connection_;
    PipeReader& reader_;
    const std::shared_ptr<const WaylandOffer> offer_;
};

} // namespace tavel
