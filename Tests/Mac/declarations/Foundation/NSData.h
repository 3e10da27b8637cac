#pragma once

#include "Foundation/NSCopying.h"
#include "Foundation/NSRange.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSData : NSObject <NSCopying>
@property(readonly) NSUInteger length;
@property(readonly) const void* bytes NS_RETURNS_INNER_POINTER;
+ (instancetype)data;
@end

@interface NSMutableData : NSData
@end

NS_ASSUME_NONNULL_END
