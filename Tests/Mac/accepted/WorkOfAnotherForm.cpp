#include <dispatch/dispatch.h>

void post() {
    dispatch_async_f(dispatch_get_main_queue(), nullptr, [](void*) {});
}
