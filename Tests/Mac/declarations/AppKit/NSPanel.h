#pragma once

#include "AppKit/NSWindow.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSPanel : NSWindow
@end

NS_ASSUME_NONNULL_END
