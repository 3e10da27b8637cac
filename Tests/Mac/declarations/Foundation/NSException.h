#pragma once

#include "Foundation/NSString.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSException : NSObject <NSCopying>
@end

NS_ASSUME_NONNULL_END
