#pragma once

#include "AppKit/NSView.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSControl : NSView
@property(copy) NSString* stringValue;
- (void)performClick:(nullable id)sender;
@end

NS_ASSUME_NONNULL_END
