#pragma once

#include "CoreFoundation/CFArray.h"
#include "CoreFoundation/CFBase.h"
#include "CoreFoundation/CFData.h"
#include "CoreFoundation/CFDictionary.h"
#include "CoreFoundation/CFMachPort.h"
#include "CoreFoundation/CFNumber.h"
#include "CoreFoundation/CFRunLoop.h"
#include "CoreFoundation/CFString.h"
