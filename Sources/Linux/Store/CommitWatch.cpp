#include "Linux/Store/CommitWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <utility>

namespace tavel {

namespace {

// Not IN_MODIFY: a commit's last write to the file comes before readers can see the commit. LmdbWrite sets
// the file's times when they can (IN_ATTRIB). The system closes the file of a process that was killed in
// between (IN_CLOSE_WRITE).
constexpr std::uint32_t signsOfACommit = IN_ATTRIB | IN_CLOSE_WRITE;

} // namespace

bool CommitWatch::start(const LmdbEnvironment& environment, EventLoop::Function committed) {
    end(); // of a start that found no memory
    events_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    // The file is watched, not its directory: it is made anew only while nobody has the store open.
    if (events_ < 0 || inotify_add_watch(events_, environment.path(), signsOfACommit) < 0) {
        end();
        return false;
    }
    watch_.emplace(events_, [this, committed = std::move(committed)] {
        takeEvents(); // before the look at the store: what comes after them is an event again
        committed();
    });
    return true;
}

void CommitWatch::end() {
    watch_.reset();
    if (events_ >= 0)
        close(std::exchange(events_, -1));
}

/// Takes them all, unless a signal interrupts it: then the descriptor stays readable.
void CommitWatch::takeEvents() const {
    std::array<char, 4096> buffer{};
    while (read(events_, buffer.data(), buffer.size()) > 0) {
    }
}

} // namespace tavel
