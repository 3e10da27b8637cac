#pragma once

namespace tavel {

/// Asks the system to make this application the active one, which gets the keys. The system decides, later,
/// and may refuse. Main thread only.
void requestActivation();

} // namespace tavel
