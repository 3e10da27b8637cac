#include "Linux/Store/PasteboardStore.h"
#include "Linux/Store/StorePasteboard.h"
#include "Tests/Conformance/PasteboardConformance.h"
#include "Tests/Support/TestDirectory.h"
#include "Tests/Wayland/Compositor.h"
#include "Tests/Wayland/WaylandProgram.h"

#include <utility>

namespace tavel {

namespace {

/// A compositor of the test's own, so that no clipboard is the user's, and two programs on it. One pasteboard
/// is the clipboard. All others are in the store, as on the platform.
class WaylandBackend final : public PasteboardBackend {
public:
    enum class Clipboard { general, firstOpened };

    explicit WaylandBackend(Clipboard clipboard) : isFound_(clipboard == Clipboard::general) {}

    std::shared_ptr<Pasteboard> open(const std::optional<std::string>& name) override {
        return open(program_, name);
    }

    std::shared_ptr<Pasteboard> openElsewhere(const std::optional<std::string>& name) override {
        return open(otherProgram_, name);
    }

private:
    std::shared_ptr<Pasteboard> open(WaylandProgram& program, const std::optional<std::string>& name) {
        if (!std::exchange(isFound_, true))
            clipboard_ = name;
        if (name == clipboard_)
            return program.open(std::nullopt);
        return std::make_shared<StorePasteboard>(store_, name);
    }

    bool isFound_;
    std::optional<std::string> clipboard_;
    TestDirectory directory_;
    std::shared_ptr<const PasteboardStore> store_ =
        std::make_shared<const PasteboardStore>(directory_.path());
    Compositor compositor_{{.offersWlr = false}};
    WaylandProgram program_{compositor_.display(), TransferTimeOuts{}};
    WaylandProgram otherProgram_{compositor_.display(), TransferTimeOuts{}};
};

/// Each test's own pasteboard is the clipboard.
constexpr PasteboardBackendMaker wayland{"Wayland", []() -> std::unique_ptr<PasteboardBackend> {
                                             return std::make_unique<WaylandBackend>(
                                                 WaylandBackend::Clipboard::firstOpened);
                                         }};

/// The general pasteboard is the clipboard.
constexpr PasteboardBackendMaker waylandPlatform{"Wayland", []() -> std::unique_ptr<PasteboardBackend> {
                                                     return std::make_unique<WaylandBackend>(
                                                         WaylandBackend::Clipboard::general);
                                                 }};

} // namespace

INSTANTIATE_TEST_SUITE_P(Backend, PasteboardConformance, testing::Values(wayland), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, AnyNameConformance, testing::Values(wayland), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, ReplacementIsolationConformance, testing::Values(wayland), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, GeneralPasteboardConformance, testing::Values(waylandPlatform),
                         backendLabel);

} // namespace tavel
