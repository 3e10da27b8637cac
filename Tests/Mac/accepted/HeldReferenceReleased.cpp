#include "Mac/CFRef.h"

void release(tavel::CFRef<CFDataRef>& data) {
    data = {};
}
