#pragma once

#include "CoreFoundation/CoreFoundation.h"
#include "Foundation/NSDate.h"
#include "Foundation/NSString.h"

NS_ASSUME_NONNULL_BEGIN

typedef NSString* NSRunLoopMode;

OBJC_EXPORT const NSRunLoopMode NSDefaultRunLoopMode;

NS_ASSUME_NONNULL_END
