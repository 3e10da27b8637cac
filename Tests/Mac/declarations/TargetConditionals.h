#pragma once

// GoogleTest includes this header on a Mac, to tell it from a telephone.
#define TARGET_OS_IPHONE 0
