#pragma once

// GNUstep's AppKit, and the additions that the adaptors use.
#include "Tests/Mac/Gnustep/Additions/Application.h"
#include "Tests/Mac/Gnustep/Additions/Controls.h"
#include "Tests/Mac/Gnustep/Additions/Pasteboard.h"

#include_next <AppKit/AppKit.h>
