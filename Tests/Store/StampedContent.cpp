#include "Tests/Store/StampedContent.h"

#include "Tests/Support/ReadingLimits.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tavel {

namespace {

std::string payloadOf(const Stamp& stamp) {
    std::string payload(stamp.payloadBytes, '\0');
    std::memcpy(payload.data(), &stamp, sizeof stamp);
    // A linear congruential sequence: any 8 bytes identify their position and their content.
    std::uint64_t word = stamp.writer * 0x9E3779B97F4A7C15U + stamp.sequence;
    for (std::size_t offset = sizeof stamp; offset < payload.size(); offset += sizeof word) {
        word = word * 6364136223846793005U + 1442695040888963407U;
        std::memcpy(payload.data() + offset, &word, std::min(sizeof word, payload.size() - offset));
    }
    return payload;
}

std::string tailOf(const Stamp& stamp) {
    std::string tail(sizeof stamp, '\0');
    std::memcpy(tail.data(), &stamp, sizeof stamp);
    return tail;
}

} // namespace

bool writeStamped(Pasteboard& pasteboard, const Stamp& stamp) {
    const std::vector<PasteboardItem> items{
        {{std::string(stampedPayloadType), Bytes::adopt(payloadOf(stamp))}},
        {{std::string(stampedTailType), Bytes::adopt(tailOf(stamp))}},
    };
    return pasteboard.replaceWithItems(items).has_value();
}

std::optional<Stamp> stampOfPayload(std::string_view payload) {
    Stamp stamp;
    if (payload.size() < sizeof stamp)
        return std::nullopt;
    std::memcpy(&stamp, payload.data(), sizeof stamp);
    const bool whole = stamp.payloadBytes == payload.size() && payload == payloadOf(stamp);
    return whole ? std::optional(stamp) : std::nullopt;
}

StampedReading readStamped(Pasteboard& pasteboard) {
    for (;;) {
        StampedReading reading{pasteboard.changeCount(), std::nullopt};
        const auto payload = pasteboard.data(stampedPayloadType, ample);
        const auto tail = pasteboard.data(stampedTailType, ample);
        if (pasteboard.changeCount() != reading.changeCount)
            continue;
        if (payload && tail) {
            const auto stamp = stampOfPayload(payload->view());
            if (stamp && tail->view() == tailOf(*stamp))
                reading.stamp = stamp;
        }
        return reading;
    }
}

} // namespace tavel
