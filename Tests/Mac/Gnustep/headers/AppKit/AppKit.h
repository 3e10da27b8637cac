#pragma once

// GNUstep's AppKit with what the adaptors use besides.
#include "Tests/Mac/Gnustep/Additions/Application.h"
#include "Tests/Mac/Gnustep/Additions/Controls.h"
#include "Tests/Mac/Gnustep/Additions/Pasteboard.h"

#include_next <AppKit/AppKit.h>
