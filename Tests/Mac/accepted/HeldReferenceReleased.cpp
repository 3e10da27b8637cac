#include "PlatformMac/CFRef.h"

void release(tavel::CFRef<CFDataRef>& data) {
    data = {};
}
