#include <ImageIO/ImageIO.h>

bool isPng(CGImageSourceRef source) {
    CFStringRef type = CGImageSourceGetType(source);
    return CFEqual(type, CFSTR("public.png")) != 0;
    // expected-warning@-1 {{Nullable pointer is passed to a callee that requires a non-null}}
}
