#pragma once

#include "Linux/Base/Descriptor.h"
#include "Support/Bytes.h"

#include <cstddef>
#include <string_view>

namespace tavel {

/// Files in memory (memfd_create(2)), which have no name and never reach a disk. Each function throws
/// std::system_error if the system refuses. Any thread.

/// A file with that content, which nobody can change any more. This is the one copy of a picture that its
/// conversion takes: the program that reads it can be handed a file only, and the content is in the memory of
/// this process.
Descriptor sealedCopy(std::string_view content);

/// A file of zeros, whose size nobody can change any more. It takes memory where it is written to.
Descriptor zeros(std::size_t size);

/// The first `size` bytes of a file of `zeros`, without copying them. From now on nobody can change the file,
/// and what follows these bytes is given up. Throws also if another process still could write to it.
Bytes takeStart(const Descriptor& file, std::size_t size);

} // namespace tavel
