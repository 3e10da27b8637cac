#pragma once

#include "Tests/Conformance/PasteboardConformance.h"

namespace tavel {

/// The system's own pasteboards. A second MacPasteboard object plays the other program; it shares only the
/// server with the first. The backend's destructor removes its named pasteboards from the server.
std::unique_ptr<PasteboardBackend> makeMacBackend();

inline constexpr PasteboardBackendMaker macBackend{"Mac", makeMacBackend};

} // namespace tavel
