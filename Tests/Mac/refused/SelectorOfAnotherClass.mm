#include <AppKit/AppKit.h>

void rename(NSTextField* field) {
    [field setTitle:@"name"]; // expected-warning {{'NSTextField' may not respond to 'setTitle:'}}
}
