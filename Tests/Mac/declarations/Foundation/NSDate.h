#pragma once

#include "Foundation/NSCopying.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSDate : NSObject <NSCopying>
+ (instancetype)date;
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)seconds;
@end

NS_ASSUME_NONNULL_END
