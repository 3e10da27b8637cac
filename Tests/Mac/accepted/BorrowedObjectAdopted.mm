#include "Mac/Retained.h"

tavel::Retained<NSDate> now() {
    return tavel::Retained<NSDate>::retain([NSDate date]);
}
