#include <dispatch/dispatch.h>

void post() {
    dispatch_async_f(dispatch_get_main_queue(), nullptr, [] {});
    // expected-error@-1 {{no matching function for call to 'dispatch_async_f'}}
}
