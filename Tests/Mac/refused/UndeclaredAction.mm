#include <AppKit/AppKit.h>

NSButton* confirmingButton(id target) {
    return [NSButton buttonWithTitle:@"OK" target:target action:@selector(confirmNmae)];
    // expected-warning@-1 {{undeclared selector 'confirmNmae'}}
}
