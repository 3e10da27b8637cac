#pragma once

#include "Foundation/NSURL.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
@property(readonly, copy) NSURL* temporaryDirectory API_AVAILABLE(macos(10.12));
@end

NS_ASSUME_NONNULL_END
