#pragma once

#include "Linux/X11/Selections/IncomingTransfer.h"
#include "Linux/X11/X11Connection.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <vector>

namespace tavel {

/// Asks the owners of selections for their content and waits for it. While it waits, events go to their
/// handlers as always. One thread.
class SelectionReader {
public:
    using Clock = X11Connection::Clock;

    struct Request {
        xcb_atom_t selection;
        xcb_atom_t target;
        xcb_timestamp_t time;
        std::size_t limit; // a value of more bytes is not taken
    };

    struct Answer {
        xcb_atom_t type;
        int format;
        Bytes bytes;
    };

    explicit SelectionReader(X11Connection& connection);

    /// Asks for one target and waits for its value. nullopt on refusal, malformed or oversized data, owner
    /// exit, inactivity for `inactivityTimeOut`, and at `deadline`.
    std::optional<Answer> read(const Request& request, Clock::duration inactivityTimeOut,
                               Clock::time_point deadline);

    /// Like `read`, with atoms in the property that goes along with the request, as SAVE_TARGETS wants them.
    std::optional<Answer> readWithParameter(const Request& request, const std::vector<xcb_atom_t>& parameter,
                                            Clock::duration inactivityTimeOut, Clock::time_point deadline);

    /// Nobody will answer for that selection any more, or what they answer is out of date.
    void abandon(xcb_atom_t selection);

    /// Whether there are requests that nobody waits for any more, but that may still be answered.
    bool awaitsLateAnswers() const;

    void handleAnswer(const xcb_selection_notify_event_t& answer);

    /// `requestNumber` is that of the last request before the change, as every event tells it.
    void handlePropertyChange(const xcb_property_notify_event_t& change, std::uint32_t requestNumber);

private:
    struct Transfer {
        Request request;
        xcb_atom_t property;
        IncomingTransfer state;
        bool isAnswered = false;
        std::uint32_t lastReading = 0; // the request's number
    };

    using Position = std::list<Transfer>::iterator;

    Position begin(const Request& request);
    std::optional<Answer> convert(Position transfer, Clock::duration inactivityTimeOut,
                                  Clock::time_point deadline);
    std::optional<Answer> wait(Position transfer, Clock::duration inactivityTimeOut,
                               Clock::time_point deadline);
    void takeIn(Transfer& transfer);
    void letThrough(Transfer& transfer);
    PropertyPart readPart(Transfer& transfer, std::size_t offset, std::size_t length);
    static bool canRefuse(const Transfer& transfer, xcb_timestamp_t time);
    Position transferFor(const xcb_selection_notify_event_t& answer);
    xcb_atom_t freeProperty();
    bool isInUse(xcb_atom_t property) const;

    X11Connection& connection_;
    xcb_atom_t incrementalType_;
    std::vector<xcb_atom_t> properties_; // the one that was used last stands last
    std::list<Transfer> transfers_;      // those begun and not over, oldest first
};

} // namespace tavel
