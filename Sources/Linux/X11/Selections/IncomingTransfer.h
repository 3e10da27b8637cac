#pragma once

#include "Linux/X11/Selections/GrowingBuffer.h"
#include "Support/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tavel {

/// What reading a property gave. Atoms are numbers here: of their meaning only INCR's matters.
struct PropertyPart {
    std::uint32_t type = 0; // 0: there is no property
    int format = 0;         // bits: 8, 16 or 32
    Bytes bytes;
    std::size_t remaining = 0; // bytes of the property's value behind these
};

/// One conversion of a selection on its way to us, at once or in increments (ICCCM 2.2, 2.7.2). It only keeps
/// account: whoever owns it reads the property whenever there is a part to read, and deletes it after its
/// last part, which an owner takes for the order to go on.
class IncomingTransfer {
public:
    enum class State {
        requested,  // nothing has been answered
        arriving,   // the value comes in one property, of which a part has been read
        increments, // the value comes in increments, the next one may be there
        complete,   // the value is there
        failed,     // there will be no value, but the owner may go on sending
        over,       // there will be no value, and nothing more comes
    };

    /// More than `limit` bytes are not taken in. `incrementalType` is the atom INCR.
    IncomingTransfer(std::size_t limit, std::uint32_t incrementalType);

    State state() const { return state_; }

    /// Whether the owner has nothing more to send.
    bool isOver() const { return state_ == State::complete || state_ == State::over; }

    /// Whether a property that changes now is a part of the value.
    bool expectsIncrement() const { return state_ == State::increments || (failed() && sendsIncrements_); }

    /// The owner refuses.
    void refused();

    /// A part of the property was read, after the owner's answer or, in increments, after a change of the
    /// property.
    void received(const PropertyPart& part);

    /// Gives up: the value is not wanted any more. What still comes is let through, so that an owner who can
    /// serve one transfer at a time is not stuck for ever.
    void abandon();

    /// How many bytes have come, as a sign of life.
    std::size_t receivedBytes() const { return receivedBytes_; }

    /// The value when it is complete, once.
    Bytes takeValue();

    std::uint32_t type() const { return type_; }
    int format() const { return format_; }

private:
    bool failed() const { return state_ == State::failed; }
    void receivedWhole(const PropertyPart& part);
    void receivedIncrement(const PropertyPart& part);
    void keep(const PropertyPart& part);
    void fail();

    std::size_t limit_;
    std::uint32_t incrementalType_;
    State state_ = State::requested;
    bool sendsIncrements_ = false;
    std::uint32_t type_ = 0;
    int format_ = 0;
    std::size_t receivedBytes_ = 0;
    GrowingBuffer buffer_;
    std::optional<Bytes> whole_; // a value that came in one part, uncopied
};

} // namespace tavel
