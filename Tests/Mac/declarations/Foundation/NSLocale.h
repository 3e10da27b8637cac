#pragma once

#include "Foundation/NSString.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSLocale : NSObject <NSCopying>
@property(class, readonly, copy) NSLocale* currentLocale;
- (instancetype)initWithLocaleIdentifier:(NSString*)identifier NS_DESIGNATED_INITIALIZER;
- (instancetype)init NS_UNAVAILABLE;
+ (instancetype)new NS_UNAVAILABLE;
@end

NS_ASSUME_NONNULL_END
