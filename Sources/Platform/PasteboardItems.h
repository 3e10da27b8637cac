#pragma once

#include "Platform/Pasteboard.h"

/// The operations of Pasteboard on a list of items in memory.
namespace tavel::pasteboardItems {

using Items = std::vector<PasteboardItem>;

std::vector<std::string> types(const Items& items);
std::optional<Bytes> string(const Items& items, std::string_view type);
std::optional<Bytes> data(const Items& items, std::string_view type);

/// The data under public.file-url of all items that have it, in item order.
std::vector<std::string> fileUrls(const Items& items);

/// The content that the values make when they are written one after the other. nullopt if one that is to be
/// text is not UTF-8.
std::optional<Items> fromValues(std::span<const PasteboardValue> values);

/// Puts data under `type` on the first item, which is created if there is none.
void putOnFirstItem(Items& items, std::string_view type, const Bytes& data);

} // namespace tavel::pasteboardItems
