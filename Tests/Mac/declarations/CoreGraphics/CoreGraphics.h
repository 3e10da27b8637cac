#pragma once

// No file here has a name that begins with CG: the analyzer believes none such when it says what may be null.

#include "CoreGraphics/Geometry.h"
#include "CoreGraphics/Image.h"
#include "CoreGraphics/QuartzEvent.h"
