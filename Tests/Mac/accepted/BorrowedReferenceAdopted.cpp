#include "Mac/CFRef.h"

#include <ImageIO/ImageIO.h>

tavel::CFRef<CGImageRef> imageOf(CGImageSourceRef source) {
    return tavel::CFRef<CGImageRef>::adopt(CGImageSourceCreateImageAtIndex(source, 0, nullptr));
}
