#pragma once

#include "AppKit/NSResponder.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSView : NSResponder
- (void)addSubview:(NSView*)view;
@property NSRect frame;
@end

NS_ASSUME_NONNULL_END
