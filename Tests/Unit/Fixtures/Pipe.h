#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace tavel {

/// A pipe whose ends close with it.
class Pipe {
public:
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe");
        reader_ = ends[0];
        writer_ = ends[1];
    }

    ~Pipe() {
        closeReader();
        closeWriter();
    }

    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reader() const { return reader_; }

    int writer() const { return writer_; }

    void closeReader() { closeEnd(reader_); }

    void closeWriter() { closeEnd(writer_); }

    /// Reads up to the end of the pipe, which is there once every writer has closed.
    std::string drain() const {
        std::string content;
        std::array<char, 4096> piece{};
        for (;;) {
            const ssize_t count = read(reader_, piece.data(), piece.size());
            if (count == 0)
                return content;
            if (count > 0)
                content.append(piece.data(), static_cast<std::size_t>(count));
            else if (errno != EINTR)
                throw std::system_error(errno, std::generic_category(), "read");
        }
    }

    static void setNonBlocking(int descriptor) {
        if (fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK) != 0)
            throw std::system_error(errno, std::generic_category(), "fcntl");
    }

private:
    static void closeEnd(int& descriptor) {
        if (descriptor >= 0)
            close(std::exchange(descriptor, -1));
    }

    int reader_ = -1;
    int writer_ = -1;
};

} // namespace tavel
