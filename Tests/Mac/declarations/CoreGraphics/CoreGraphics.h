#pragma once

// No file name here begins with CG: the analyzer ignores nullability annotations in files with such names.

#include "CoreGraphics/Geometry.h"
#include "CoreGraphics/Image.h"
#include "CoreGraphics/QuartzEvent.h"
