#pragma once

#include "Foundation/Foundation.h"

#include <sys/types.h>

NS_ASSUME_NONNULL_BEGIN

enum NSApplicationActivationPolicy : NSInteger {
    NSApplicationActivationPolicyAccessory = 1,
};

typedef NSUInteger NSApplicationActivationOptions;

@interface NSRunningApplication : NSObject
@property(nullable, readonly, copy) NSString* bundleIdentifier;
@property(readonly) pid_t processIdentifier;
- (BOOL)activateWithOptions:(NSApplicationActivationOptions)options;
+ (nullable instancetype)runningApplicationWithProcessIdentifier:(pid_t)process;
@end

NS_ASSUME_NONNULL_END
