#pragma once

#include "AppKit/NSMenuItem.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSMenu : NSObject <NSCopying>
- (instancetype)initWithTitle:(NSString*)title NS_DESIGNATED_INITIALIZER;
- (NSMenuItem*)addItemWithTitle:(NSString*)title
                         action:(nullable SEL)action
                  keyEquivalent:(NSString*)keyEquivalent;
- (void)setSubmenu:(nullable NSMenu*)menu forItem:(NSMenuItem*)item;
@end

NS_ASSUME_NONNULL_END
