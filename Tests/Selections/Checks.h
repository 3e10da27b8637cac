#pragma once

#include "Tests/Selections/SelectionPeers.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// A type that no owner offers.
inline constexpr auto addedType = "net.example.added";

/// Adds that type to what the program knows of the pasteboard now. To be called on its thread.
std::optional<std::int64_t> addType(SelectionPeers& peers);

/// Has the program gather what it needs for adding types to the first content of another program, these
/// required, and add the type at the end of that.
std::optional<std::int64_t> gatherAndAddType(SelectionPeers& peers, const std::vector<std::string>& required);

/// Checks all operations of a pasteboard without a server.
void expectNothing(SelectionPeers& peers, std::int64_t count);

} // namespace tavel
