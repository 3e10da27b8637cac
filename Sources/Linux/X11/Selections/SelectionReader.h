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

/// Requests conversions from the owners of selections and waits for the values. Dispatches events while it
/// waits. One thread.
class SelectionReader {
public:
    using Clock = X11Connection::Clock;

    struct Request {
        xcb_atom_t selection;
        xcb_atom_t target;
        xcb_timestamp_t time;
        std::size_t limit; // bytes; of a larger value the answer is a beginning
    };

    struct Answer {
        xcb_atom_t type;
        int format;
        Bytes bytes;
        bool isCut; // more than the limit came: these are the first `limit` + 1 bytes
    };

    explicit SelectionReader(X11Connection& connection);

    /// Asks for one target and waits for its value. nullopt on refusal, malformed data, owner exit,
    /// inactivity for `inactivityTimeOut`, and at `deadline`.
    std::optional<Answer> read(const Request& request, Clock::duration inactivityTimeOut,
                               Clock::time_point deadline);

    /// Like `read`, with atoms as the request's parameter in its property, as SAVE_TARGETS needs them.
    std::optional<Answer> readWithParameter(const Request& request, const std::vector<xcb_atom_t>& parameter,
                                            Clock::duration inactivityTimeOut, Clock::time_point deadline);

    /// The selection has a new owner or none: gives up all its transfers.
    void abandon(xcb_atom_t selection);

    /// Whether owners may still answer requests that have been given up.
    bool awaitsLateAnswers() const;

    void handleAnswer(const xcb_selection_notify_event_t& answer);

    /// `requestNumber` is the event's full sequence number: the last request before the change.
    void handlePropertyChange(const xcb_property_notify_event_t& change, std::uint32_t requestNumber);

private:
    struct Transfer {
        Request request;
        xcb_atom_t property;
        IncomingTransfer state;
        bool isAnswered = false;
        std::uint32_t lastReading = 0; // sequence number of the last GetProperty or DeleteProperty
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
    std::vector<xcb_atom_t> properties_; // least recently used first
    std::list<Transfer> transfers_;      // oldest first
};

} // namespace tavel
