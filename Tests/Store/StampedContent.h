#pragma once

#include "Platform/Pasteboard.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// Names one content among all that several processes write: who wrote it, and as their how-manieth.
struct Stamp {
    std::uint64_t writer = 0;
    std::uint64_t sequence = 0;
    std::uint64_t payloadBytes = 0;

    bool operator==(const Stamp&) const = default;
};

/// Of the first item; the bytes follow from the stamp, which they begin with.
inline constexpr std::string_view stampedPayloadType = "net.example.payload";

/// Of the last item: the stamp alone.
inline constexpr std::string_view stampedTailType = "net.example.tail";

/// The smallest payload that has room for the stamp.
inline constexpr std::uint64_t smallestStampedPayload = sizeof(Stamp);

/// Replaces the content with one that carries the stamp in both its items, as one update.
bool writeStamped(Pasteboard& pasteboard, const Stamp& stamp);

/// The stamp of a payload whose every byte is what its stamp says. Nothing for a torn one.
std::optional<Stamp> stampOfPayload(std::string_view payload);

struct StampedReading {
    std::int64_t changeCount = 0;
    std::optional<Stamp> stamp; // nothing if the content is not whole, or not a stamped one
};

/// Reads the content. The parts are read one after the other, so this starts anew whenever the change count
/// moves meanwhile.
StampedReading readStamped(Pasteboard& pasteboard);

} // namespace tavel
