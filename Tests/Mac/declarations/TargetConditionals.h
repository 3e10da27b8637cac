#pragma once

// GoogleTest includes this header on Apple systems, to tell macOS from iOS.
#define TARGET_OS_IPHONE 0
