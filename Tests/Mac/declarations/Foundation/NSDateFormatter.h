#pragma once

#include "Foundation/NSDate.h"
#include "Foundation/NSLocale.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSFormatter : NSObject <NSCopying>
@end

@interface NSDateFormatter : NSFormatter
- (NSString*)stringFromDate:(NSDate*)date;
@property(null_resettable, copy) NSString* dateFormat;
@property(null_resettable, copy) NSLocale* locale;
@end

NS_ASSUME_NONNULL_END
