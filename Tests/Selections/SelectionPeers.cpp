#include "Tests/Selections/SelectionPeers.h"

#include "Platform/PasteboardTypes.h"
#include "Tests/Support/ReadingLimits.h"

#include <cstdint>
#include <stdexcept>

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

std::optional<std::string> SelectionPeers::text() {
    const auto text = board().string(pasteboardType::string, ample);
    return text ? std::optional<std::string>(text->view()) : std::nullopt;
}

std::optional<std::string> SelectionPeers::data(std::string_view type) {
    const auto data = board().data(type, ample);
    return data ? std::optional<std::string>(data->view()) : std::nullopt;
}

void SelectionPeers::write(std::string_view type, std::string_view data) {
    const PasteboardItem item{{std::string(type), Bytes::copyOf(data)}};
    if (!board().replaceWithItems({&item, 1}))
        throw std::runtime_error("The program cannot write.");
}

void SelectionPeers::settle() {
    program().run([this] {
        program().selections().synchronize(); // handles the earlier events
        program().selections().synchronize(); // waits for the requests made for them
    });
}

bool SelectionPeers::isServing() {
    bool serving = false;
    program().run([&] {
        program().selections().synchronize();
        serving = program().selections().isServing();
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
