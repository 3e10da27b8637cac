#pragma once

#include "Tests/Conformance/PasteboardConformance.h"

namespace tavel {

/// The system's own pasteboards. A second MacPasteboard object plays the other program; it shares only the
/// server with the first. The backend's destructor removes its named pasteboards from the server.
std::unique_ptr<PasteboardBackend> makeMacBackend();

/// Whether a name in a list of types can only be the system's own, beside a type of the content: a name from
/// before uniform type identifiers, or an identifier that the system made up.
bool isNameOfTheSystem(std::string_view name);

inline constexpr PasteboardBackendMaker macBackend{"Mac", makeMacBackend};

} // namespace tavel
