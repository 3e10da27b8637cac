#pragma once

#include "AppKit/NSView.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSText : NSView
@property NSRange selectedRange;
- (void)copy:(nullable id)sender;
- (void)cut:(nullable id)sender;
- (void)paste:(nullable id)sender;
- (void)selectAll:(nullable id)sender;
@end

NS_ASSUME_NONNULL_END
