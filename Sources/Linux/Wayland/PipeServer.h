#pragma once

#include "Linux/Base/Descriptor.h"
#include "Linux/Base/ReadyDescriptors.h"
#include "Linux/Selections/TransferTimeOuts.h"
#include "Support/Bytes.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

namespace tavel {

/// Writes values to the pipes of readers. Waits for nobody: a reader that takes nothing more is given up at
/// its deadline. One thread.
class PipeServer {
public:
    using Clock = InactivityDeadline::Clock;

    /// Names a transfer for as long as this object lives.
    using Number = std::uint64_t;

    /// A compositor does not tell which program reads. Of all transfers together, those that have stood still
    /// the longest give way to new ones.
    static constexpr std::size_t mostTransfers = 256;

    /// What the values of all transfers may hold together.
    static constexpr std::size_t mostBytesHeld = std::size_t{256} << 20;

    /// The descriptors must outlive this object. `keyOf` makes the key of a transfer in them.
    PipeServer(const ReadyDescriptors& descriptors, std::uint64_t (*keyOf)(Number), Clock::duration timeOut);
    ~PipeServer();
    PipeServer(const PipeServer&) = delete;
    PipeServer& operator=(const PipeServer&) = delete;

    /// Writes the value to the pipe or socket, and closes it then. Closes any other kind of file at once:
    /// writing to it might take its time. Throws std::bad_alloc.
    void serve(Descriptor reader, const Bytes& value);

    /// Writes a part of the value. To be called when the reader is ready.
    void write(Number transfer);

    bool isServing() const { return !transfers_.empty(); }

    /// The earliest deadline of a reader, at which `giveUpOverdue` is due; nullopt without one.
    std::optional<Clock::time_point> nextDeadline() const;
    void giveUpOverdue(Clock::time_point now);

private:
    struct Transfer {
        Descriptor reader;
        Bytes value;
        InactivityDeadline deadline;
        std::size_t written = 0;
    };

    using Position = std::map<Number, Transfer>::iterator;

    bool writePart(Transfer& transfer) const;
    void makeRoomFor(const Bytes& value);
    std::size_t bytesHeldWith(const Bytes& value) const;
    Position mostIdle();
    Position end(Position position);

    const ReadyDescriptors& descriptors_;
    std::uint64_t (*keyOf_)(Number);
    Clock::duration timeOut_;
    Number lastNumber_ = 0;
    std::map<Number, Transfer> transfers_;
};

} // namespace tavel
