#pragma once

#include "AppKit/NSResponder.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSView : NSResponder
- (void)addSubview:(NSView*)view;
@property NSRect frame;
@property(readonly) NSRect bounds;
@property(copy) NSArray<__kindof NSView*>* subviews;
@end

NS_ASSUME_NONNULL_END
