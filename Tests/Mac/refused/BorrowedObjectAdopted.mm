#include "Mac/Retained.h"

tavel::Retained<NSDate> now() {
    return tavel::Retained<NSDate>::adopt([NSDate date]);
    // expected-warning@-1 {{object that is not owned at this point}}
}
