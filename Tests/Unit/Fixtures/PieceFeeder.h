#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace tavel {

/// Delivers the content in pieces of exactly these sizes, one for each read, as messages of a datagram
/// socket. A piece must be small, because a read drops what it has no room for.
class PieceFeeder {
public:
    PieceFeeder(std::string content, std::size_t pieceSize) {
        if (socketpair(AF_UNIX, SOCK_DGRAM, 0, ends_.data()) != 0)
            throw std::runtime_error("socketpair");
        writer_ = std::thread([this, content = std::move(content), pieceSize] {
            for (std::size_t start = 0; start < content.size(); start += pieceSize)
                EXPECT_GE(
                    send(ends_[1], content.data() + start, std::min(pieceSize, content.size() - start), 0),
                    0);
            EXPECT_EQ(send(ends_[1], "", 0, 0), 0); // the end of input
        });
    }

    ~PieceFeeder() {
        writer_.join();
        close(ends_[0]);
        close(ends_[1]);
    }

    PieceFeeder(const PieceFeeder&) = delete;
    PieceFeeder& operator=(const PieceFeeder&) = delete;

    int descriptor() const { return ends_[0]; }

private:
    std::array<int, 2> ends_{};
    std::thread writer_;
};

} // namespace tavel
