#include "Mac/CFRef.h"

#include <ImageIO/ImageIO.h>

tavel::CFRef<CFStringRef> typeOf(CGImageSourceRef source) {
    return tavel::CFRef<CFStringRef>::adopt(CGImageSourceGetType(source));
    // expected-warning@-1 {{object that is not owned at this point}}
}
