#include <os/log.h>

void log(int number) {
    os_log_error(OS_LOG_DEFAULT, "%d", number);
}
