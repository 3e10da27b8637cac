#pragma once

#include "Foundation/NSString.h"

NS_ASSUME_NONNULL_BEGIN

typedef uint64_t NSActivityOptions;

enum : NSActivityOptions {
    NSActivityUserInitiated = 0x00FFFFFFull | (1ull << 20),
    NSActivityUserInitiatedAllowingIdleSystemSleep = NSActivityUserInitiated & ~(1ull << 20),
};

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason;
@end

NS_ASSUME_NONNULL_END
