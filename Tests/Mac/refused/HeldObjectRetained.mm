#include "Mac/Retained.h"

void keep(const tavel::Retained<NSDate>& date) {
    [date.get() retain];
} // expected-warning {{Potential leak of an object of type}}
