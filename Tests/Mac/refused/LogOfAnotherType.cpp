#include <os/log.h>

void log(int number) {
    os_log_error(OS_LOG_DEFAULT, "%{public}s", number);
    // expected-warning@-1 {{format specifies type 'char *' but the argument has type 'int'}}
}
