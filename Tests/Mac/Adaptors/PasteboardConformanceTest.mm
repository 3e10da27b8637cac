#include "Mac/MacPasteboard.h"
#include "Tests/Mac/Adaptors/MacBackend.h"

#include <set>

namespace tavel {

namespace {

class MacBackend final : public PasteboardBackend {
public:
    ~MacBackend() override {
        @autoreleasepool {
            for (const std::string& name : names_)
                [MacPasteboard::named(name) releaseGlobally];
        }
    }

    std::shared_ptr<Pasteboard> open(const std::optional<std::string>& name) override {
        if (name)
            names_.insert(*name);
        return std::make_shared<MacPasteboard>(name);
    }

    std::shared_ptr<Pasteboard> openElsewhere(const std::optional<std::string>& name) override {
        return open(name);
    }

    bool isNameOfThePlatform(std::string_view name) const override { return isNameOfTheSystem(name); }

private:
    std::set<std::string> names_;
};

} // namespace

bool isNameOfTheSystem(std::string_view name) {
    return name.find('.') == std::string_view::npos || name.find(' ') != std::string_view::npos ||
           name.starts_with("dyn.");
}

std::unique_ptr<PasteboardBackend> makeMacBackend() {
    return std::make_unique<MacBackend>();
}

INSTANTIATE_TEST_SUITE_P(Backend, PasteboardConformance, testing::Values(macBackend), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, ItemConformance, testing::Values(macBackend), backendLabel);
INSTANTIATE_TEST_SUITE_P(Backend, TrailingZeroConformance, testing::Values(macBackend), backendLabel);

} // namespace tavel
