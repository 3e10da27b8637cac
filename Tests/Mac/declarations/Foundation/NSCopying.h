#pragma once

#include "Foundation/NSObjCRuntime.h"

NS_ASSUME_NONNULL_BEGIN

typedef struct _NSZone NSZone;

@protocol NSCopying
- (id)copyWithZone:(nullable NSZone*)zone;
@end

NS_ASSUME_NONNULL_END
