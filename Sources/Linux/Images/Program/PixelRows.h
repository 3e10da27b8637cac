#pragma once

#include "Linux/Images/Program/RowLayout.h"
#include "Linux/Images/Program/VipsRuntime.h"

#include <cstdint>
#include <functional>

namespace tavel {

RowLayout rowLayout(const VipsImage* image);

/// Receives the next row; false ends the evaluation. Calls come one at a time, from the top down, but on
/// different threads. May throw std::bad_alloc.
using RowConsumer = std::function<bool(const std::uint8_t* row)>;

/// Evaluates an image row by row. False if a part of it cannot be decoded, or if the consumer wants no
/// more. Throws what the consumer throws.
bool forEachRow(VipsImage* image, const RowConsumer& consumer);

} // namespace tavel
