#include "Fuzz/Fuzz.h"
#include "Linux/X11/Selections/IncomingTransfer.h"

#include <string>

namespace {

constexpr std::size_t limit = 1000;
constexpr std::uint32_t incrementalType = 7;

/// Invariants of a transfer.
void check(const tavel::IncomingTransfer& transfer, std::size_t sent) {
    using State = tavel::IncomingTransfer::State;
    tavel::require(transfer.receivedBytes() <= sent);
    tavel::require(!transfer.isOver() || !transfer.expectsIncrement());
    const bool isDone = transfer.state() == State::complete || transfer.state() == State::over;
    tavel::require(transfer.isOver() == isDone || transfer.isCut());
    tavel::require(transfer.room() <= limit + 1);
}

} // namespace

/// Each 4 bytes are one event: its kind, the property's type, its size, and the size that remains.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    IncomingTransfer transfer(limit, incrementalType);
    std::size_t sent = 0;
    for (std::size_t i = 0; i + 4 <= size; i += 4) {
        switch (data[i] % 8) {
        case 0:
            transfer.refused();
            break;
        case 1:
            transfer.abandon();
            break;
        default:
            const Bytes bytes =
                Bytes::adopt(std::string(std::size_t{4} * data[i + 2], static_cast<char>(data[i])));
            const std::size_t remaining = data[i + 3] % 2 == 0 ? 0 : data[i + 3];
            const int format = data[i] % 3 == 0 ? 32 : 8;
            const bool wasOver = transfer.isOver();
            transfer.received({data[i + 1] % 9U, format, bytes, remaining});
            sent += bytes.size();
            require(!wasOver || transfer.isOver());
        }
        check(transfer, sent);
    }
    if (transfer.isCut())
        require(transfer.takeValue().size() == limit + 1);
    else if (transfer.hasValue())
        require(transfer.takeValue().size() <= limit);
    return 0;
}
