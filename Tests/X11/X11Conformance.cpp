#include "Tests/Conformance/PasteboardConformance.h"
#include "Tests/Support/XServer.h"
#include "Tests/X11/X11Program.h"

namespace tavel {

namespace {

/// An X server of the test's own, so that no selection is the user's, and two programs on it.
class X11Backend final : public PasteboardBackend {
public:
    std::shared_ptr<Pasteboard> open(const std::optional<std::string>& name) override {
        return program_.open(name);
    }

    std::shared_ptr<Pasteboard> openElsewhere(const std::optional<std::string>& name) override {
        return otherProgram_.open(name);
    }

private:
    XServer server_;
    X11Program program_{server_.display(), TransferTimeOuts{}};
    X11Program otherProgram_{server_.display(), TransferTimeOuts{}};
};

constexpr PasteboardBackendMaker x11{
    "X11", []() -> std::unique_ptr<PasteboardBackend> { return std::make_unique<X11Backend>(); }};

} // namespace

INSTANTIATE_TEST_SUITE_P(Backend, PasteboardConformance, testing::Values(x11), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, AnyNameConformance, testing::Values(x11), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, ReplacementIsolationConformance, testing::Values(x11), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, GeneralPasteboardConformance, testing::Values(x11), backendLabel);

} // namespace tavel
