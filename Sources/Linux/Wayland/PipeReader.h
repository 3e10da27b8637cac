#pragma once

#include "Linux/Base/Descriptor.h"
#include "Linux/Base/ReadyDescriptors.h"
#include "Linux/Selections/GrowingBuffer.h"
#include "Linux/Selections/TransferTimeOuts.h"
#include "Linux/Wayland/WaylandConnection.h"
#include "Support/Bytes.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace tavel {

/// Takes in the values that owners write to pipes. A pipe tells nothing but its end: neither a size, nor a
/// refusal, nor whether the owner has died half way. Waits for nobody. One thread.
class PipeReader {
public:
    using Clock = std::chrono::steady_clock;

    /// Names a request for as long as this object lives.
    using Ticket = std::uint64_t;

    struct Request {
        std::uint64_t offer;
        std::string type;
        std::size_t limit; // bytes; of a larger value the answer is a beginning
    };

    struct Answer {
        Bytes bytes;
        bool isCut; // more than the limit came: these are the first `limit` + 1 bytes
    };

    /// These objects must outlive this one. `keyOf` makes the key of a ticket in `descriptors`.
    PipeReader(WaylandConnection& connection, const ReadyDescriptors& descriptors,
               std::uint64_t (*keyOf)(Ticket), const TransferTimeOuts& timeOuts);
    ~PipeReader();
    PipeReader(const PipeReader&) = delete;
    PipeReader& operator=(const PipeReader&) = delete;

    Ticket ask(const Request& request);

    /// Whether the value has come, or will not come.
    bool isDecided(Ticket ticket) const;

    /// Whether the owner was given up at its deadline.
    bool hasTimedOut(Ticket ticket) const;

    /// Ends the request, and gives the value if it has come. An owner that still writes finds its pipe
    /// closed.
    std::optional<Answer> take(Ticket ticket);

    /// Takes in a part of what the pipe holds. To be called when it is ready.
    void read(Ticket ticket);

    /// The compositor has answered all questions up to this one.
    void handleAnswer(std::uint64_t question);

    /// The earliest deadline of an owner, at which `giveUpOverdue` is due; nullopt without one.
    std::optional<Clock::time_point> nextDeadline() const;
    void giveUpOverdue(Clock::time_point now);

private:
    enum class State {
        receiving,
        confirming, // the pipe has ended; if the content was replaced, that will be known with the answer
        complete,
        cut,
        failed,
    };

    struct Transfer {
        Transfer(std::size_t limitBytes, OwnerDeadline ownerDeadline)
            : limit(limitBytes), deadline(ownerDeadline) {}

        std::size_t limit;
        OwnerDeadline deadline;
        Descriptor pipe;
        GrowingBuffer buffer;
        State state = State::receiving;
        std::uint64_t question = 0;
        bool hasTimedOut = false;
    };

    static bool isOpen(const Transfer& transfer) {
        return transfer.state == State::receiving || transfer.state == State::confirming;
    }

    bool begin(Transfer& transfer, Ticket ticket, const Request& request);
    void readPart(Transfer& transfer);
    void end(Transfer& transfer, State state);

    WaylandConnection& connection_;
    const ReadyDescriptors& descriptors_;
    std::uint64_t (*keyOf_)(Ticket);
    const TransferTimeOuts timeOuts_;
    Ticket lastTicket_ = 0;
    std::map<Ticket, Transfer> transfers_;
};

} // namespace tavel
