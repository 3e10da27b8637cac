#include <AppKit/AppKit.h>

void turnBack(NSPasteboard* pasteboard) {
    pasteboard.changeCount = 0; // expected-error {{assignment to readonly property}}
}
