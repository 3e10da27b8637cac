#include "Linux/X11/Selections/IncomingTransfer.h"

#include <utility>

namespace tavel {

IncomingTransfer::IncomingTransfer(std::size_t limit, std::uint32_t incrementalType)
    : limit_(limit), incrementalType_(incrementalType) {}

void IncomingTransfer::refused() {
    if (state_ == State::requested || state_ == State::failed)
        state_ = State::over;
}

void IncomingTransfer::received(const PropertyPart& part) {
    if (isOver())
        return;
    receivedBytes_ += part.bytes.size();
    if (part.type == incrementalType_) {
        // The property holds the owner's estimate of the size, which is not used (ICCCM 2.7.2).
        sendsIncrements_ = true;
        if (state_ == State::requested)
            state_ = State::increments;
        else
            fail(); // INCR in the middle of a transfer
    } else if (sendsIncrements_) {
        receivedIncrement(part);
    } else {
        receivedWhole(part);
    }
}

void IncomingTransfer::receivedWhole(const PropertyPart& part) {
    if (part.type == 0 && !isCut())
        fail();
    if (part.type == 0 || letsThrough()) {
        end();
        return;
    }
    if (state_ == State::requested) {
        type_ = part.type;
        format_ = part.format;
        state_ = State::arriving;
        if (part.remaining == 0 && part.bytes.size() <= limit_) {
            whole_ = part.bytes;
            state_ = State::complete;
            return;
        }
    }
    keep(part);
    if (part.remaining == 0)
        end();
}

void IncomingTransfer::receivedIncrement(const PropertyPart& part) {
    if (part.type == 0)
        return; // the property has been deleted
    if (type_ == 0) {
        type_ = part.type;
        format_ = part.format;
    }
    if (part.bytes.empty() && part.remaining == 0)
        end();
    else
        keep(part);
}

/// Appends the part, up to one byte more than the limit. Fails if its type or format differ from those
/// before.
void IncomingTransfer::keep(const PropertyPart& part) {
    if (letsThrough())
        return;
    if (part.type != type_ || part.format != format_) {
        fail();
        return;
    }
    buffer_.append(part.bytes.view().substr(0, room()));
    if (buffer_.size() > limit_)
        state_ = State::cut;
}

/// The owner has sent everything.
void IncomingTransfer::end() {
    if (isCut())
        cutIsOver_ = true;
    else
        state_ = state_ == State::failed ? State::over : State::complete;
}

void IncomingTransfer::abandon() {
    if (!isOver() && !isCut())
        fail();
}

void IncomingTransfer::fail() {
    state_ = State::failed;
    buffer_ = {};
    whole_.reset();
}

Bytes IncomingTransfer::takeValue() {
    if (isCut())
        state_ = cutIsOver_ ? State::over : State::failed;
    if (whole_)
        return *std::exchange(whole_, std::nullopt);
    return std::exchange(buffer_, {}).take();
}

} // namespace tavel
