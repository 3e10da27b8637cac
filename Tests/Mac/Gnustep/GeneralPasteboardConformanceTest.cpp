#include "Tests/Mac/Adaptors/MacBackend.h"

namespace tavel {

// Safe: this is the general pasteboard of the tests' own server, not the user's.
INSTANTIATE_TEST_SUITE_P(Backend, GeneralPasteboardConformance, testing::Values(macBackend), backendLabel);

} // namespace tavel
