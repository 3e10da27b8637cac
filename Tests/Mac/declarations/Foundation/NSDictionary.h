#pragma once

#include "Foundation/NSCopying.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject <NSCopying, NSFastEnumeration>
- (instancetype)init NS_DESIGNATED_INITIALIZER;
+ (instancetype)dictionaryWithObject:(ObjectType)object forKey:(KeyType<NSCopying>)key;
@end

NS_ASSUME_NONNULL_END
