#pragma once

#import <Foundation/Foundation.h>

#include <utility>

namespace tavel {

/// Calls `action` in an autorelease pool of its own and gives what it gives, or `otherwise` if it raises an
/// Objective-C exception. C++ knows nothing of those, so none may leave the folder. What `action` gives must
/// not be an autoreleased object.
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

/// The same for what gives nothing.
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
