#pragma once

#include "Platform/Pasteboard.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// Identifies one content among all that several processes write: its writer, and its number among that
/// writer's contents.
struct Stamp {
    std::uint64_t writer = 0;
    std::uint64_t sequence = 0;
    std::uint64_t payloadBytes = 0;

    bool operator==(const Stamp&) const = default;
};

/// The first item's type. Its data begins with the stamp, which determines all of its bytes.
inline constexpr std::string_view stampedPayloadType = "net.example.payload";

/// The last item's type. Its data is the stamp alone.
inline constexpr std::string_view stampedTailType = "net.example.tail";

/// The smallest payload that has room for the stamp.
inline constexpr std::uint64_t smallestStampedPayload = sizeof(Stamp);

/// Replaces the content with one that carries the stamp in both its items.
bool writeStamped(Pasteboard& pasteboard, const Stamp& stamp);

/// The stamp of a payload, if every byte matches it; nullopt for a torn payload.
std::optional<Stamp> stampOfPayload(std::string_view payload);

struct StampedReading {
    std::int64_t changeCount = 0;
    std::optional<Stamp> stamp; // nullopt if the content is torn, or has no stamp
};

/// Reads the content's parts one after the other, and again if the change count moves meanwhile.
StampedReading readStamped(Pasteboard& pasteboard);

} // namespace tavel
