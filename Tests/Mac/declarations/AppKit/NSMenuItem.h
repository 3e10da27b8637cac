#pragma once

#include "Foundation/Foundation.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSMenuItem : NSObject <NSCopying>
- (instancetype)initWithTitle:(NSString*)title
                       action:(nullable SEL)action
                keyEquivalent:(NSString*)keyEquivalent NS_DESIGNATED_INITIALIZER;
@end

NS_ASSUME_NONNULL_END
