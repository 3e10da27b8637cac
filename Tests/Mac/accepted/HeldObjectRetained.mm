#include "Mac/Retained.h"

tavel::Retained<NSDate> keep(const tavel::Retained<NSDate>& date) {
    return date;
}
