#include "Linux/Base/SystemLog.h"

#include <syslog.h>

namespace tavel {

void writeToSystemLog(const std::string& message) {
    syslog(LOG_USER | LOG_ERR, "%s", message.c_str());
}

} // namespace tavel
