#pragma once

#include "Foundation/NSCopying.h"
#include "Foundation/NSRange.h"

NS_ASSUME_NONNULL_BEGIN

typedef unsigned short unichar;

@interface NSString : NSObject <NSCopying>
@property(readonly) NSUInteger length;
+ (instancetype)stringWithCharacters:(const unichar*)characters length:(NSUInteger)length;
@property(readonly, copy) NSString* precomposedStringWithCanonicalMapping;
- (BOOL)isEqualToString:(NSString*)string;
- (instancetype)init NS_DESIGNATED_INITIALIZER;
- (void)getCharacters:(unichar*)buffer range:(NSRange)range;
- (instancetype)initWithCharacters:(const unichar*)characters length:(NSUInteger)length;
- (nullable instancetype)initWithUTF8String:(const char*)text;
@end

/// The class of literals.
@interface NSConstantString : NSString
@end

NS_ASSUME_NONNULL_END
