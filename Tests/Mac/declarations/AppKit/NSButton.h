#pragma once

#include "AppKit/NSControl.h"

NS_ASSUME_NONNULL_BEGIN

enum NSBezelStyle : NSUInteger {};

@interface NSButton : NSControl
+ (instancetype)buttonWithTitle:(NSString*)title
                         target:(nullable id)target
                         action:(nullable SEL)action API_AVAILABLE(macos(10.12));
@property(copy) NSString* title;
@property NSBezelStyle bezelStyle;
@property(copy) NSString* keyEquivalent;
@end

NS_ASSUME_NONNULL_END
