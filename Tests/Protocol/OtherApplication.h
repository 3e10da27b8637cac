#pragma once

#include "Linux/Store/PasteboardStore.h"
#include "Linux/Store/StorePasteboard.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

/// A pasteboard's name; the general one has none.
using PasteboardName = std::optional<std::string>;

/// The pasteboard of most tests; tests about pasteboard names use others.
inline const PasteboardName sharedPasteboard = "shared";

inline constexpr std::string_view originMarkerType = "com.corvelle.tavelbridge.clipboard-origin-v1";

Representation representation(std::string_view type, std::string_view data);
PasteboardItem textItem(std::string_view text);
PasteboardItem urlItem(std::string_view url);

/// A type with its data, which gtest can print.
using TypeAndData = std::pair<std::string, std::string>;

/// Another program of the same user: it copies, and reads what the agent wrote. One object at a time per
/// process.
class OtherApplication {
public:
    /// `store` is created if it does not exist.
    explicit OtherApplication(const std::filesystem::path& store);

    /// Puts the items on the pasteboard in one change; returns its change count.
    std::int64_t copy(const std::vector<PasteboardItem>& items,
                      const PasteboardName& name = sharedPasteboard);
    std::int64_t copyText(std::string_view text, const PasteboardName& name = sharedPasteboard);

    /// Adds a type to the content; returns the change count.
    std::int64_t addType(std::string_view type, std::string_view data,
                         const PasteboardName& name = sharedPasteboard);

    std::int64_t changeCount(const PasteboardName& name = sharedPasteboard) const;

    /// The content of the pasteboard, item by item.
    std::vector<std::vector<TypeAndData>> content(const PasteboardName& name = sharedPasteboard) const;

    /// The text on the pasteboard.
    std::optional<std::string> text(const PasteboardName& name = sharedPasteboard) const;

private:
    std::shared_ptr<const PasteboardStore> store_;
};

} // namespace tavel
