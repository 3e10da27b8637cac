#pragma once

#include "AppKit/NSControl.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSTextField : NSControl
@property(getter=isEditable) BOOL editable;
+ (instancetype)labelWithString:(NSString*)string API_AVAILABLE(macos(10.12));
+ (instancetype)wrappingLabelWithString:(NSString*)string API_AVAILABLE(macos(10.12));
+ (instancetype)textFieldWithString:(NSString*)string API_AVAILABLE(macos(10.12));
@end

NS_ASSUME_NONNULL_END
