#pragma once

#include "Foundation/Foundation.h"

NS_ASSUME_NONNULL_BEGIN

enum NSEventType : NSUInteger {
    NSEventTypeApplicationDefined = 15,
};

typedef unsigned long long NSEventMask;

enum : NSEventMask {
    NSEventMaskAny = NSUIntegerMax,
};

typedef NSUInteger NSEventModifierFlags;

enum : NSEventModifierFlags {
    NSEventModifierFlagCommand = 1 << 20,
};

@class NSGraphicsContext;

@interface NSEvent : NSObject <NSCopying>
@property(class, readonly) NSPoint mouseLocation;
+ (nullable NSEvent*)otherEventWithType:(NSEventType)type
                               location:(NSPoint)location
                          modifierFlags:(NSEventModifierFlags)flags
                              timestamp:(NSTimeInterval)time
                           windowNumber:(NSInteger)windowNumber
                                context:(nullable NSGraphicsContext*)unused
                                subtype:(short)subtype
                                  data1:(NSInteger)data1
                                  data2:(NSInteger)data2;
@end

NS_ASSUME_NONNULL_END
