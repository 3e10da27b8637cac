#pragma once

#include "Linux/KeylessPlatform.h"
#include "Linux/Store/StorePasteboards.h"

#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// The platform of a machine without a display: pasteboards in the user's store.
class HeadlessPlatform final : public KeylessPlatform {
public:
    HeadlessPlatform() : KeylessPlatform("there is no display, so there are no keys to intercept") {}

    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) override {
        return store_.open(name);
    }
    std::string describePasteboard(const std::optional<std::string>& name) override;
    bool servesContents() override { return false; }
    void handOverContents() override {}

private:
    StorePasteboards store_;
};

} // namespace tavel
