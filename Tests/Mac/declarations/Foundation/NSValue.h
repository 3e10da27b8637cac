#pragma once

#include "Foundation/NSCopying.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSValue : NSObject <NSCopying>
@end

@interface NSNumber : NSValue
+ (NSNumber*)numberWithBool:(BOOL)value;
@end

NS_ASSUME_NONNULL_END
