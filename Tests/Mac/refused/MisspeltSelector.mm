#include <AppKit/AppKit.h>

void clear(NSPasteboard* pasteboard) {
    [pasteboard clearContent]; // expected-warning {{instance method '-clearContent' not found}}
}
