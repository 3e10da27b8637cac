#include "Linux/Base/ParentWatch.h"

#include "Support/Process.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

extern "C" {
#include <sys/pidfd.h> // glibc 2.36 declares its functions for C alone
}

namespace tavel {

bool ParentWatch::start(std::int32_t processIdentifier, EventLoop::Function lost) {
    end();                                       // of a start that found no memory
    process_ = pidfd_open(processIdentifier, 0); // closed on exec
    if (process_ < 0 && errno != ESRCH)
        return false;
    // Looked at after the process was opened: an ended parent's number may be another process's by then. A
    // process has a new parent before the descriptor of the old one becomes readable.
    if (process_ < 0 || parentProcessIdentifier() != processIdentifier) {
        end();
        loop_.post(std::move(lost));
        return true;
    }
    watch_.emplace(process_, [this, lost = std::move(lost)] {
        end(); // the descriptor stays readable
        lost();
    });
    return true;
}

void ParentWatch::end() {
    watch_.reset();
    if (process_ >= 0)
        close(std::exchange(process_, -1));
}

} // namespace tavel
