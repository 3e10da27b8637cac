#include "Tests/Selections/SelectionSuites.h"
#include "Tests/X11/X11Peers.h"

namespace tavel {

namespace {

constexpr SelectionPeersMaker x11{"X11",
                                  [](const TransferTimeOuts& timeOuts) -> std::unique_ptr<SelectionPeers> {
                                      return std::make_unique<X11Peers>(timeOuts);
                                  }};

} // namespace

INSTANTIATE_TEST_SUITE_P(Display, ChangeCount, testing::Values(x11), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, ForeignValues, testing::Values(x11), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, Gathered, testing::Values(x11), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, HostileOwner, testing::Values(x11), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, LostServer, testing::Values(x11), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, NoticedContent, testing::Values(x11), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, Reader, testing::Values(x11), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, ReadingLimits, testing::Values(x11), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, TakenOverContent, testing::Values(x11), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, VanishingReader, testing::Values(x11), displayLabel);

} // namespace tavel
