#include <ImageIO/ImageIO.h>

bool isPng(CGImageSourceRef source) {
    CFStringRef type = CGImageSourceGetType(source);
    return type != nullptr && CFEqual(type, CFSTR("public.png")) != 0;
}
