#include "Tests/Mac/Double/CoreArray.h"

using namespace tavel::doubles;

/// Only its address matters.
struct CFArrayCallBacks {};

const CFArrayCallBacks kCFTypeArrayCallBacks{};

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks) {
    auto& array = *new Array;
    for (CFIndex i = 0; i < count; ++i) {
        array.values.push_back(values[i]);
        if (callBacks != nullptr)
            array.held.emplace_back(values[i]);
    }
    return refTo<CFArrayRef>(array);
}
