#pragma once

#include "ImageIO/ImageDestination.h"
#include "ImageIO/ImageSource.h"
