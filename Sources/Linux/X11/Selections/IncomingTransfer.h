#pragma once

#include "Linux/Selections/GrowingBuffer.h"
#include "Support/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tavel {

/// The result of one GetProperty. Atoms are plain numbers here; only INCR has a meaning.
struct PropertyPart {
    std::uint32_t type = 0; // 0: the property does not exist
    int format = 0;         // bits: 8, 16 or 32
    Bytes bytes;
    std::size_t remaining = 0; // bytes of the property's value after these
};

/// The state of one conversion for which this process is the requestor, as a whole or in increments (ICCCM
/// 2.2, 2.7.2). It makes no requests: the reader reads the property whenever a part is there, and deletes it
/// after its last part. The deletion tells an owner to send the next increment.
class IncomingTransfer {
public:
    enum class State {
        requested,  // the owner has not answered
        arriving,   // the value is in one property, and a part of it has been read
        increments, // the value comes in increments
        complete,   // the value is there
        cut,        // more than the limit came, of which the beginning is there; the owner may still send
        failed,     // without a value; the owner may still send
        over,       // without a value; the owner sends nothing more
    };

    /// Keeps `limit` + 1 bytes of a longer value, and lets the rest through. `incrementalType` is the atom
    /// INCR.
    IncomingTransfer(std::size_t limit, std::uint32_t incrementalType);

    State state() const { return state_; }

    /// Whether the owner sends nothing more.
    bool isOver() const {
        return state_ == State::complete || state_ == State::over || (isCut() && cutIsOver_);
    }

    /// Whether a value or the beginning of one is there.
    bool hasValue() const { return state_ == State::complete || isCut(); }

    /// Whether the value is the beginning of a longer one: `limit` + 1 bytes.
    bool isCut() const { return state_ == State::cut; }

    /// Whether nothing more is kept, whatever comes.
    bool letsThrough() const { return state_ == State::failed || isCut(); }

    /// Whether the next change of the property is an increment.
    bool expectsIncrement() const {
        return state_ == State::increments || (letsThrough() && sendsIncrements_ && !isOver());
    }

    /// How many bytes are still kept: no more need to be read.
    std::size_t room() const { return limit_ + 1 - buffer_.size(); }

    /// The owner has refused the conversion.
    void refused();

    /// A part of the property has been read, after the owner's answer or, for increments, after a change of
    /// the property.
    void received(const PropertyPart& part);

    /// Drops the value. The transfer still accepts what the owner sends, so that an owner that serves one
    /// transfer at a time can finish.
    void abandon();

    /// All bytes received so far, which show the owner's progress.
    std::size_t receivedBytes() const { return receivedBytes_; }

    /// The value, as `hasValue` says. To be called once.
    Bytes takeValue();

    std::uint32_t type() const { return type_; }
    int format() const { return format_; }

private:
    void receivedWhole(const PropertyPart& part);
    void receivedIncrement(const PropertyPart& part);
    void keep(const PropertyPart& part);
    void end();
    void fail();

    std::size_t limit_;
    std::uint32_t incrementalType_;
    State state_ = State::requested;
    bool sendsIncrements_ = false;
    bool cutIsOver_ = false; // the owner has sent the rest of a value that was cut
    std::uint32_t type_ = 0;
    int format_ = 0;
    std::size_t receivedBytes_ = 0;
    GrowingBuffer buffer_;
    std::optional<Bytes> whole_; // a value that came in one part, without a copy
};

} // namespace tavel
