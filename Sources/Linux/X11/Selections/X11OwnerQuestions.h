#pragma once

#include "Linux/Selections/OwnerQuestions.h"
#include "Linux/X11/Selections/SelectionReader.h"
#include "Linux/X11/X11Connection.h"

#include <xcb/xcb.h>

namespace tavel {

/// Asks the owner of a selection of an X server, by conversions. Waits for the server.
class X11OwnerQuestions final : public OwnerQuestions {
public:
    /// These objects must outlive this one.
    X11OwnerQuestions(X11Connection& connection, SelectionReader& reader, xcb_atom_t selection)
        : connection_(connection), reader_(reader), selection_(selection) {}

    bool isLost() const override { return connection_.isLost(); }
    void prepare() override;
    Ticket askForTargets() override;
    Ticket ask(const std::string& target, std::size_t limit) override;
    bool isDecided(Ticket ticket) const override { return reader_.isDecided(ticket); }
    bool hasTimedOut(Ticket ticket) const override { return reader_.hasTimedOut(ticket); }
    std::vector<std::string> takeTargets(Ticket ticket) override;
    std::optional<SelectionValue> take(Ticket ticket, const std::string& target) override;

private:
    Ticket ask(xcb_atom_t target, std::size_t limit);

    X11Connection& connection_;
    SelectionReader& reader_;
    xcb_atom_t selection_;
};

} // namespace tavel
