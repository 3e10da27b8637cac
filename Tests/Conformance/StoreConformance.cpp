#include "Linux/Store/PasteboardStore.h"
#include "Linux/Store/StorePasteboard.h"
#include "Tests/Conformance/PasteboardConformance.h"
#include "Tests/Support/TestDirectory.h"

namespace tavel {

namespace {

/// A store of the test's own, without any pasteboard of the user. A second object takes the part of another
/// program: the objects share only the store. Tests/Store adds tests with real processes.
class HeadlessBackend final : public PasteboardBackend {
public:
    std::shared_ptr<Pasteboard> open(const std::optional<std::string>& name) override {
        return std::make_shared<StorePasteboard>(store_, name);
    }

    std::shared_ptr<Pasteboard> openElsewhere(const std::optional<std::string>& name) override {
        return open(name);
    }

private:
    TestDirectory directory_;
    std::shared_ptr<const PasteboardStore> store_ =
        std::make_shared<const PasteboardStore>(directory_.path());
};

constexpr PasteboardBackendMaker headless{
    "Headless", []() -> std::unique_ptr<PasteboardBackend> { return std::make_unique<HeadlessBackend>(); }};

} // namespace

INSTANTIATE_TEST_SUITE_P(Backend, PasteboardConformance, testing::Values(headless), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, AnyNameConformance, testing::Values(headless), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, ItemConformance, testing::Values(headless), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, TrailingZeroConformance, testing::Values(headless), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, ReplacementIsolationConformance, testing::Values(headless), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, GeneralPasteboardConformance, testing::Values(headless), backendLabel);

} // namespace tavel
