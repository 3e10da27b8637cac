#pragma once

#include "CoreGraphics/Geometry.h"
#include "Foundation/NSObjCRuntime.h"

NS_ASSUME_NONNULL_BEGIN

typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;

OBJC_EXPORT const NSRect NSZeroRect;

inline NSPoint NSMakePoint(CGFloat x, CGFloat y) {
    return {x, y};
}
inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    return {{x, y}, {width, height}};
}

NS_ASSUME_NONNULL_END
