#include "Linux/Store/PasteboardStore.h"
#include "Linux/Store/StorePasteboard.h"
#include "Tests/Conformance/PasteboardConformance.h"
#include "Tests/Support/TestDirectory.h"
#include "Tests/Wayland/Compositor.h"
#include "Tests/Wayland/Sway.h"
#include "Tests/Wayland/WaylandProgram.h"

#include <utility>

namespace tavel {

namespace {

struct ExtCompositor : Compositor {
    ExtCompositor() : Compositor({.offersWlr = false}) {}
};

enum class Clipboard { general, firstOpened };

/// A compositor of the test's own, so that no clipboard is the user's, and two programs on it. One pasteboard
/// is the clipboard. All others are in the store, as on the platform.
template <typename AnyCompositor>
class WaylandBackend final : public PasteboardBackend {
public:
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
    AnyCompositor compositor_;
    WaylandProgram program_{compositor_.display(), TransferTimeOuts{}};
    WaylandProgram otherProgram_{compositor_.display(), TransferTimeOuts{}};
};

template <typename AnyCompositor, Clipboard clipboard>
std::unique_ptr<PasteboardBackend> make() {
    return std::make_unique<WaylandBackend<AnyCompositor>>(clipboard);
}

/// Each test's own pasteboard is the clipboard.
constexpr PasteboardBackendMaker ext{"Ext", make<ExtCompositor, Clipboard::firstOpened>};
constexpr PasteboardBackendMaker sway{"Sway", make<Sway, Clipboard::firstOpened>};

/// The general pasteboard is the clipboard.
constexpr PasteboardBackendMaker extPlatform{"Ext", make<ExtCompositor, Clipboard::general>};
constexpr PasteboardBackendMaker swayPlatform{"Sway", make<Sway, Clipboard::general>};

} // namespace

INSTANTIATE_TEST_SUITE_P(Backend, PasteboardConformance, testing::Values(ext, sway), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, AnyNameConformance, testing::Values(ext, sway), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, ReplacementIsolationConformance, testing::Values(ext, sway), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, GeneralPasteboardConformance, testing::Values(extPlatform, swayPlatform),
                         backendLabel);

} // namespace tavel
