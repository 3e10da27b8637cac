#include "Tests/X11/X11Peers.h"

#include "Platform/PasteboardTypes.h"
#include "Tests/Support/ReadingLimits.h"

#include <cstdint>

namespace tavel {

TransferTimeOuts shortOwnerTimeOut() {
    TransferTimeOuts timeOuts;
    timeOuts.ownerInactivity = std::chrono::milliseconds(200);
    return timeOuts;
}

TransferTimeOuts longTimeOuts() {
    constexpr std::chrono::seconds limit{30};
    return {limit, limit, limit, limit, limit, 1};
}

X11Peers::X11Peers(const TransferTimeOuts& timeOuts)
    : program_(server_.display(), timeOuts), board_(program_.open(std::nullopt)) {}

std::optional<std::string> X11Peers::text() {
    const auto text = board_->string(pasteboardType::string, ample);
    return text ? std::optional<std::string>(text->view()) : std::nullopt;
}

std::optional<std::string> X11Peers::data(std::string_view type) {
    const auto data = board_->data(type, ample);
    return data ? std::optional<std::string>(data->view()) : std::nullopt;
}

void X11Peers::write(std::string_view type, std::string_view data) {
    const PasteboardItem item{{std::string(type), Bytes::copyOf(data)}};
    if (!board_->replaceWithItems({&item, 1}))
        throw std::runtime_error("The program cannot write.");
}

void X11Peers::settle() {
    program_.run([this] {
        program_.selections().synchronize(); // handles the earlier events
        program_.selections().synchronize(); // waits for the requests made for them
    });
}

bool X11Peers::isServing() {
    bool serving = false;
    program_.run([&] {
        program_.selections().synchronize();
        serving = program_.selections().isServing();
    });
    return serving;
}

std::string distinctBytes(std::size_t size, unsigned int seed) {
    std::string bytes(size, '\0');
    std::uint32_t state = seed * 2654435761U + 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>('0' + (state >> 24) % 64);
    }
    return bytes;
}

} // namespace tavel
