#include "Mac/Retained.h"

void release(const tavel::Retained<NSDate>& date) {
    [date.get() release]; // expected-warning {{object that is not owned at this point}}
}
