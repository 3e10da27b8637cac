#include "Linux/Wayland/PipeReader.h"

#include "Support/Throughput.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

namespace tavel {

namespace {

/// One reading: a small value needs little memory, and a large one few system calls. It is also what is read
/// in one pass of the event loop.
constexpr std::size_t smallestReadPart = std::size_t{64} * 1024;
constexpr std::size_t largestReadPart = std::size_t{1} << 20;

struct Pipe {
    Descriptor reading;
    Descriptor writing;
};

Pipe makePipe() {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
        return {};
    Pipe pipe{Descriptor(ends[0]), Descriptor(ends[1])};
    // The owner's end blocks: not every program expects anything else.
    fcntl(pipe.reading.number(), F_SETFL, O_NONBLOCK);
    enlargePipe(pipe.reading.number());
    return pipe;
}

} // namespace

PipeReader::PipeReader(WaylandConnection& connection, const ReadyDescriptors& descriptors,
                       std::uint64_t (*keyOf)(Ticket), const TransferTimeOuts& timeOuts)
    : connection_(connection), descriptors_(descriptors), keyOf_(keyOf), timeOuts_(timeOuts) {}

PipeReader::~PipeReader() {
    for (auto& [ticket, transfer] : transfers_)
        end(transfer, State::failed);
}

PipeReader::Ticket PipeReader::ask(const Request& request) {
    const Ticket ticket = ++lastTicket_;
    Transfer& transfer =
        transfers_.try_emplace(ticket, request.limit, OwnerDeadline(timeOuts_, Clock::now())).first->second;
    if (!begin(transfer, ticket, request))
        end(transfer, State::failed);
    return ticket;
}

bool PipeReader::begin(Transfer& transfer, Ticket ticket, const Request& request) {
    Pipe pipe = makePipe();
    if (!pipe.reading || !connection_.receive(request.offer, request.type, pipe.writing.number()) ||
        !descriptors_.add(pipe.reading.number(), ReadyDescriptors::For::reading, keyOf_(ticket)))
        return false;
    transfer.pipe.reset(pipe.reading.release());
    return true;
}

bool PipeReader::isDecided(Ticket ticket) const {
    const auto found = transfers_.find(ticket);
    return found == transfers_.end() || !isOpen(found->second);
}

bool PipeReader::hasTimedOut(Ticket ticket) const {
    const auto found = transfers_.find(ticket);
    return found != transfers_.end() && found->second.hasTimedOut;
}

std::optional<PipeReader::Answer> PipeReader::take(Ticket ticket) {
    const auto found = transfers_.find(ticket);
    if (found == transfers_.end())
        return std::nullopt;
    Transfer& transfer = found->second;
    std::optional<Answer> answer;
    if (transfer.state == State::complete || transfer.state == State::cut)
        answer = {transfer.buffer.take(), transfer.state == State::cut};
    end(transfer, State::failed);
    transfers_.erase(found);
    return answer;
}

void PipeReader::read(Ticket ticket) {
    const auto found = transfers_.find(ticket);
    if (found == transfers_.end() || found->second.state != State::receiving)
        return;
    try {
        readPart(found->second);
    } catch (const std::bad_alloc&) {
        end(found->second, State::failed);
    }
}

void PipeReader::readPart(Transfer& transfer) {
    GrowingBuffer& buffer = transfer.buffer;
    const std::size_t part = std::min(std::clamp(buffer.size(), smallestReadPart, largestReadPart),
                                      transfer.limit + 1 - buffer.size());
    const ssize_t size = ::read(transfer.pipe.number(), buffer.room(part), part);
    if (size > 0) {
        buffer.filled(static_cast<std::size_t>(size));
        transfer.deadline.received(static_cast<std::size_t>(size), Clock::now());
        if (buffer.size() > transfer.limit)
            end(transfer, State::cut);
    } else if (size == 0) {
        // The pipe of an owner that was replaced ends, too, and may do so before the news of the new one.
        transfer.question = connection_.ask();
        end(transfer, transfer.question == 0 ? State::failed : State::confirming);
    } else if (errno != EAGAIN && errno != EINTR) {
        end(transfer, State::failed);
    }
}

void PipeReader::end(Transfer& transfer, State state) {
    if (transfer.pipe)
        descriptors_.remove(transfer.pipe.number());
    transfer.pipe.reset();
    transfer.state = state;
}

void PipeReader::handleAnswer(std::uint64_t question) {
    for (auto& [ticket, transfer] : transfers_) {
        if (transfer.state == State::confirming && transfer.question <= question)
            transfer.state = State::complete;
    }
}

std::optional<PipeReader::Clock::time_point> PipeReader::nextDeadline() const {
    std::optional<Clock::time_point> next;
    for (const auto& [ticket, transfer] : transfers_) {
        if (isOpen(transfer))
            next = std::min(next.value_or(transfer.deadline.end()), transfer.deadline.end());
    }
    return next;
}

void PipeReader::giveUpOverdue(Clock::time_point now) {
    for (auto& [ticket, transfer] : transfers_) {
        if (!isOpen(transfer) || now < transfer.deadline.end())
            continue;
        end(transfer, State::failed);
        transfer.hasTimedOut = true;
    }
}

} // namespace tavel
