#pragma once

#include "objc/objc.h"
#include "os/base.h"

#define NS_ASSUME_NONNULL_BEGIN OS_ASSUME_NONNULL_BEGIN
#define NS_ASSUME_NONNULL_END OS_ASSUME_NONNULL_END
#define NS_DESIGNATED_INITIALIZER __attribute__((objc_designated_initializer))
#define NS_CONSUMED __attribute__((ns_consumed))
#define NS_RETURNS_NOT_RETAINED __attribute__((ns_returns_not_retained))
#define NS_UNAVAILABLE __attribute__((unavailable))

typedef long NSInteger;
typedef unsigned long NSUInteger;

NS_ASSUME_NONNULL_BEGIN

@protocol NSObject
- (Class)class;
- (BOOL)isEqual:(nullable id)object;
- (instancetype)retain;
- (oneway void)release;
- (instancetype)autorelease;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject>
- (instancetype)init NS_DESIGNATED_INITIALIZER;
+ (instancetype)new;
+ (instancetype)alloc;
- (void)dealloc;
- (id)copy;
- (id)mutableCopy;
+ (Class)class;
@end

NS_ASSUME_NONNULL_END
