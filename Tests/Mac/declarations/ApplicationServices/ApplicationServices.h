#pragma once

#include "ApplicationServices/AXUIElement.h"
#include "CoreGraphics/CoreGraphics.h"
#include "ImageIO/ImageIO.h"
