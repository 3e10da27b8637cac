#pragma once

#include <unistd.h>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tavel {

/// A nameless file. As an output it never blocks, whatever its size, so a test can read afterwards what was
/// written into it; as an input it gives as many bytes at once as the reader asks for.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string_view content = "") : file_(std::tmpfile()) {
        if (file_ == nullptr)
            throw std::runtime_error("There is no room for a temporary file");
        if (std::fwrite(content.data(), 1, content.size(), file_) != content.size())
            throw std::runtime_error("The temporary file cannot be written");
        std::rewind(file_); // also writes what is buffered
    }

    ~TemporaryFile() { static_cast<void>(std::fclose(file_)); }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int descriptor() const { return fileno(file_); }

    /// What the file holds behind the first `offset` bytes. Does not move the file's own position.
    std::string contentFrom(std::size_t offset) const {
        std::string content;
        std::array<char, 65536> piece{};
        for (;;) {
            const auto position = static_cast<off_t>(offset + content.size());
            const ssize_t count = pread(descriptor(), piece.data(), piece.size(), position);
            if (count < 0)
                throw std::runtime_error("The temporary file cannot be read");
            if (count == 0)
                return content;
            content.append(piece.data(), static_cast<std::size_t>(count));
        }
    }

private:
    std::FILE* file_;
};

} // namespace tavel
