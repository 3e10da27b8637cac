#pragma once

#include "Foundation/NSCopying.h"
#include "Foundation/NSRange.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSData : NSObject <NSCopying>
@property(readonly) NSUInteger length;
@property(readonly) const void* bytes NS_RETURNS_INNER_POINTER;
+ (instancetype)data;
+ (instancetype)dataWithBytes:(nullable const void*)bytes length:(NSUInteger)length;
- (NSData*)subdataWithRange:(NSRange)range;
@end

@interface NSMutableData : NSData
- (void)appendBytes:(const void*)bytes length:(NSUInteger)length;
@end

NS_ASSUME_NONNULL_END
