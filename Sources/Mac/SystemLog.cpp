#include "Mac/SystemLog.h"

#include <os/log.h>

namespace tavel {

// Not with NSLog, which also writes to standard error wherever that leads somewhere.
void writeToSystemLog(const std::string& message) {
    os_log_error(OS_LOG_DEFAULT, "%{public}s", message.c_str());
}

} // namespace tavel
