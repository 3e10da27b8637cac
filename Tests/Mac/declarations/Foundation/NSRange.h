#pragma once

#include "Foundation/NSObjCRuntime.h"

NS_ASSUME_NONNULL_BEGIN

struct _NSRange {
    NSUInteger location;
    NSUInteger length;
};
typedef _NSRange NSRange;

inline NSRange NSMakeRange(NSUInteger location, NSUInteger length) {
    return {location, length};
}

NS_ASSUME_NONNULL_END
