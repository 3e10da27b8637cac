#include "Mac/Retained.h"

void release(tavel::Retained<NSDate>& date) {
    date = {};
}
