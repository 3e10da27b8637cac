#include <os/log.h>

const char* text();

void log() {
    os_log_error(OS_LOG_DEFAULT, text()); // expected-error {{expected ')'}}
}
