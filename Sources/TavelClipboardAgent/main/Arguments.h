#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace tavel {

/// The process identifier behind the first "--parent-pid" in the full argument list (program path first); 0
/// when there is none or it is no decimal 32-bit integer.
std::int32_t parentPID(std::span<const std::string> arguments);

/// What stands behind the first "--test-pasteboard", whatever it is; nothing if nothing does.
std::optional<std::string> testPasteboardName(std::span<const std::string> arguments);

} // namespace tavel
