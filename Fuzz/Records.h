#pragma once

#include "Fuzz/Fuzz.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <string_view>

namespace tavel {

/// Input of a reader whose records are read one at a time, each by one call of read(2).
class Records {
public:
    Records() { require(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends_.data()) == 0); }
    ~Records() {
        close(ends_[0]);
        close(ends_[1]);
    }
    Records(const Records&) = delete;
    Records& operator=(const Records&) = delete;

    /// What a reader always has room for.
    static constexpr std::size_t largest = 16'384;

    /// More do not fit into the socket.
    static constexpr std::size_t most = 500;

    /// False if the record does not fit any more.
    bool put(std::string_view bytes) const {
        return send(ends_[1], bytes.data(), bytes.size(), MSG_DONTWAIT) == static_cast<ssize_t>(bytes.size());
    }
    void end() const { shutdown(ends_[1], SHUT_WR); }
    int descriptor() const { return ends_[0]; }

private:
    std::array<int, 2> ends_{};
};

} // namespace tavel
