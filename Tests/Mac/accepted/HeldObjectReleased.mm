#include "PlatformMac/Retained.h"

void release(tavel::Retained<NSDate>& date) {
    date = {};
}
