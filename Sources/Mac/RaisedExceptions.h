#pragma once

#import <Foundation/Foundation.h>

#include <utility>

namespace tavel {

/// Calls `action` within an autorelease pool of its own. Returns its result, or `otherwise` if it raises an
/// Objective-C exception. C++ callers cannot handle those, so none may leave this folder. The result must not
/// be an autoreleased object.
template <typename Result, typename Action>
Result unlessRaised(Result otherwise, Action&& action) {
    @autoreleasepool {
        @try {
            return std::forward<Action>(action)();
        } @catch (NSException*) {
            return otherwise;
        }
    }
}

/// The same for an action without a result.
template <typename Action>
void ignoringRaised(Action&& action) {
    @autoreleasepool {
        @try {
            std::forward<Action>(action)();
        } @catch (NSException*) {
        }
    }
}

} // namespace tavel
