#include "Linux/X11/Selections/IncomingTransfer.h"

#include <utility>

namespace tavel {

IncomingTransfer::IncomingTransfer(std::size_t limit, std::uint32_t incrementalType)
    : limit_(limit), incrementalType_(incrementalType) {}

void IncomingTransfer::refused() {
    if (state_ == State::requested || failed())
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
    if (part.type == 0 || failed()) {
        fail();
        state_ = State::over;
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
        state_ = failed() ? State::over : State::complete;
}

void IncomingTransfer::receivedIncrement(const PropertyPart& part) {
    if (part.type == 0)
        return; // the property has been deleted
    if (type_ == 0) {
        type_ = part.type;
        format_ = part.format;
    }
    if (part.bytes.empty() && part.remaining == 0)
        state_ = failed() ? State::over : State::complete;
    else
        keep(part);
}

/// Appends the part. Fails if its type or format differ from those before, or if it exceeds the limit.
void IncomingTransfer::keep(const PropertyPart& part) {
    if (failed())
        return;
    const bool belongs = part.type == type_ && part.format == format_;
    if (!belongs || part.bytes.size() > limit_ - buffer_.size()) {
        fail();
        return;
    }
    buffer_.append(part.bytes.view());
}

void IncomingTransfer::abandon() {
    if (!isOver())
        fail();
}

void IncomingTransfer::fail() {
    state_ = State::failed;
    buffer_ = {};
    whole_.reset();
}

Bytes IncomingTransfer::takeValue() {
    if (whole_)
        return *std::exchange(whole_, std::nullopt);
    return std::exchange(buffer_, {}).take();
}

} // namespace tavel
