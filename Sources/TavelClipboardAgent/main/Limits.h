#pragma once

#include "Platform/FileList.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tavel {

/// The largest text that is captured or written, in UTF-8 bytes: 4 MiB.
inline constexpr std::int64_t maximumTextBytes = maximumBytes(FormatKind::text);

/// The largest image that is captured or written, in bytes (128 MiB) and in pixels.
inline constexpr std::int64_t maximumImageBytes = maximumBytes(FormatKind::picture);
inline constexpr std::int64_t maximumImagePixels = 32'000'000;

/// The largest picture that the parent may send from its history, in bytes: 64 MiB.
inline constexpr std::int64_t maximumHistoryImageBytes = 67'108'864;

/// The largest selection of files that is captured or written, in files.
inline constexpr std::size_t maximumFileCount = mostFilesOfAContent.files;

/// The longest origin marker that a command may carry, in UTF-8 bytes. A longer one on the pasteboard is not
/// the parent's and counts as none.
inline constexpr std::size_t maximumMarkerBytes = 512;

/// The pasteboard type of the parent's origin marker, which the agent writes beside the parent's content.
inline constexpr std::string_view markerType = "com.corvelle.tavelbridge.clipboard-origin-v1";

} // namespace tavel
