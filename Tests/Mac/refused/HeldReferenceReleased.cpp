#include "Mac/CFRef.h"

void release(const tavel::CFRef<CFDataRef>& data) {
    CFRelease(data.get()); // expected-warning {{object that is not owned at this point}}
}
