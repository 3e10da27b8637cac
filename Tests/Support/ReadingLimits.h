#pragma once

#include "Platform/FileList.h"

#include <cstddef>

namespace tavel {

/// For tests that read from a pasteboard and are not about limits: more than any of them writes.
inline constexpr std::size_t ample = std::size_t{1} << 30;
inline constexpr FileListLimit everyFile{1'000'000, ample};

} // namespace tavel
