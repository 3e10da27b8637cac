#include "Linux/Wayland/PipeServer.h"

#include "Linux/Base/PipeWriting.h"
#include "Support/Throughput.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tavel {

namespace {

/// What is written in one pass of the event loop.
constexpr std::size_t largestWrittenPart = std::size_t{1} << 20;

/// Larger values are worth a larger pipe.
constexpr std::size_t usualPipe = std::size_t{64} * 1024;

bool isPipeOrSocket(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

/// The reader shares this with the descriptor that it has sent, but not with its own end.
bool neverBlocks(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0;
}

} // namespace

PipeServer::PipeServer(const ReadyDescriptors& descriptors, std::uint64_t (*keyOf)(Number),
                       Clock::duration timeOut)
    : descriptors_(descriptors), keyOf_(keyOf), timeOut_(timeOut) {}

PipeServer::~PipeServer() {
    while (!transfers_.empty())
        end(transfers_.begin());
}

void PipeServer::serve(Descriptor reader, const Bytes& value) {
    if (!isPipeOrSocket(reader.number()) || !neverBlocks(reader.number()))
        return;
    if (value.size() > usualPipe)
        enlargePipe(reader.number());
    makeRoomFor(value);
    const Number number = ++lastNumber_;
    const int descriptor = reader.number();
    const auto position = transfers_
                              .try_emplace(number, Transfer{std::move(reader), value,
                                                            InactivityDeadline(timeOut_, Clock::now())})
                              .first;
    if (writePart(position->second) ||
        !descriptors_.add(descriptor, ReadyDescriptors::For::writing, keyOf_(number)))
        end(position);
}

void PipeServer::write(Number transfer) {
    const auto position = transfers_.find(transfer);
    if (position != transfers_.end() && writePart(position->second))
        end(position);
}

/// Writes a part. True if nothing is left to do: it was the last one, or the reader has gone.
bool PipeServer::writePart(Transfer& transfer) const {
    const Bytes part = transfer.value.slice(transfer.written, largestWrittenPart);
    if (part.empty())
        return true;
    const ssize_t size = writeWithoutSignal(transfer.reader.number(), part.data(), part.size());
    if (size < 0)
        return errno != EAGAIN && errno != EINTR;
    transfer.written += static_cast<std::size_t>(size);
    transfer.deadline.restart(Clock::now());
    return transfer.written == transfer.value.size();
}

void PipeServer::makeRoomFor(const Bytes& value) {
    while (!transfers_.empty() &&
           (transfers_.size() >= mostTransfers || bytesHeldWith(value) > mostBytesHeld))
        end(mostIdle());
}

std::size_t PipeServer::bytesHeldWith(const Bytes& value) const {
    std::map<const char*, std::size_t> sizes{{value.data(), value.size()}};
    for (const auto& [number, transfer] : transfers_)
        sizes.emplace(transfer.value.data(), transfer.value.size());
    std::size_t held = 0;
    for (const auto& [start, size] : sizes)
        held += size;
    return held;
}

PipeServer::Position PipeServer::mostIdle() {
    return std::ranges::min_element(transfers_, {},
                                    [](const auto& entry) { return entry.second.deadline.end(); });
}

PipeServer::Position PipeServer::end(Position position) {
    descriptors_.remove(position->second.reader.number());
    return transfers_.erase(position);
}

std::optional<PipeServer::Clock::time_point> PipeServer::nextDeadline() const {
    std::optional<Clock::time_point> next;
    for (const auto& [number, transfer] : transfers_)
        next = std::min(next.value_or(transfer.deadline.end()), transfer.deadline.end());
    return next;
}

void PipeServer::giveUpOverdue(Clock::time_point now) {
    for (auto position = transfers_.begin(); position != transfers_.end();)
        position = now >= position->second.deadline.end() ? end(position) : std::next(position);
}

} // namespace tavel
