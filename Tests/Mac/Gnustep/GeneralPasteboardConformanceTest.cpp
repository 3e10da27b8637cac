#include "Tests/Mac/Adaptors/MacBackend.h"

namespace tavel {

// The general pasteboard is that of the test's own server.
INSTANTIATE_TEST_SUITE_P(Backend, GeneralPasteboardConformance, testing::Values(macBackend), backendLabel);

} // namespace tavel
