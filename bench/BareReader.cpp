#include "Support/Throughput.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace {

constexpr std::size_t pageBytes = std::size_t{2} << 20;
constexpr std::size_t room = 50 * pageBytes;

bool answer(std::string_view reply) {
    return write(STDOUT_FILENO, reply.data(), reply.size()) == static_cast<ssize_t>(reply.size());
}

} // namespace

/// Says that it runs, reads one line of up to 100 MiB into fresh memory, as fast as a program can, and
/// answers.
int main() {
    auto* const line = static_cast<char*>(std::aligned_alloc(pageBytes, room));
    if (line == nullptr || !answer("ready\n"))
        return 1;
    tavel::enlargePipe(STDIN_FILENO);
    tavel::preferLargePages(line, room);
    std::size_t size = 0;
    do {
        const ssize_t count = read(STDIN_FILENO, line + size, room - size);
        if (count <= 0)
            return 1;
        size += static_cast<std::size_t>(count);
    } while (line[size - 1] != '\n');
    return answer("read\n") ? 0 : 1;
}
