#include "Tests/Selections/SelectionSuites.h"
#include "Tests/Wayland/WaylandPeers.h"

namespace tavel {

namespace {

constexpr SelectionPeersMaker wayland{
    "Wayland", [](const TransferTimeOuts& timeOuts) -> std::unique_ptr<SelectionPeers> {
        return std::make_unique<WaylandPeers>(timeOuts);
    }};

} // namespace

INSTANTIATE_TEST_SUITE_P(Display, ChangeCount, testing::Values(wayland), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, ForeignValues, testing::Values(wayland), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, Gathered, testing::Values(wayland), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, HostileOwner, testing::Values(wayland), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, LostServer, testing::Values(wayland), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, NoticedContent, testing::Values(wayland), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, Reader, testing::Values(wayland), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, ReadingLimits, testing::Values(wayland), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, TakenOverContent, testing::Values(wayland), displayLabel);
INSTANTIATE_TEST_SUITE_P(Display, VanishingReader, testing::Values(wayland), displayLabel);

} // namespace tavel
