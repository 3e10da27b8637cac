#pragma once

#include "CoreFoundation/CFBase.h"

#include <cstddef>

typedef struct CF_BRIDGED_TYPE(id) CGImage* CGImageRef;

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
