#pragma once

#include "Foundation/Foundation.h"

NS_ASSUME_NONNULL_BEGIN

@class NSEvent;

@interface NSResponder : NSObject
- (instancetype)init NS_DESIGNATED_INITIALIZER;
- (void)keyDown:(NSEvent*)event;
@end

@protocol NSStandardKeyBindingResponding <NSObject>
@optional
- (void)cancelOperation:(nullable id)sender;
@end

@interface NSResponder (NSStandardKeyBindingMethods) <NSStandardKeyBindingResponding>
@end

NS_ASSUME_NONNULL_END
