#pragma once

#include "objc/NSObject.h"
#include "os/availability.h"

#include <cstdint>

#define NSUIntegerMax UINTPTR_MAX
#define NS_REQUIRES_NIL_TERMINATION __attribute__((sentinel))
#define NS_RETURNS_INNER_POINTER __attribute__((objc_returns_inner_pointer))

NS_ASSUME_NONNULL_BEGIN

typedef double NSTimeInterval;

struct NSFastEnumerationState {
    unsigned long state;
    id __unsafe_unretained _Nullable* _Nullable itemsPtr;
    unsigned long* _Nullable mutationsPtr;
    unsigned long extra[5];
};

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)length;
@end

NS_ASSUME_NONNULL_END
