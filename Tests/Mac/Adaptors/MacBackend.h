#pragma once

#include "Tests/Conformance/PasteboardConformance.h"

namespace tavel {

/// The system's own pasteboards. Another program is a second object here, which shares nothing with the first
/// but the server. Named ones are taken from the server with the backend.
std::unique_ptr<PasteboardBackend> makeMacBackend();

inline constexpr PasteboardBackendMaker macBackend{"Mac", makeMacBackend};

} // namespace tavel
