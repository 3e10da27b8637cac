#include "Mac/AutoreleasePool.h"

#import <Foundation/Foundation.h>

namespace tavel {

void runInAutoreleasePool(const std::function<void()>& function) {
    @autoreleasepool {
        function();
    }
}

} // namespace tavel
