#include <AppKit/AppKit.h>

void rename(NSTextField* field) {
    [field setStringValue:@"name"];
}
