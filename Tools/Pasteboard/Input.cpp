#include "Pasteboard/Input.h"

#include "Support/Error.h"
#include "Support/ScopeExit.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tavel {

namespace {

constexpr std::size_t chunkBytes = std::size_t{256} * 1024;

[[noreturn]] void fail(const std::string& name, int code) {
    throw Error("POSIX", code, name + ": " + std::generic_category().message(code));
}

Bytes readToEnd(int descriptor, const std::string& name) {
    std::string content;
    std::size_t size = 0;
    for (;;) {
        if (content.size() - size < chunkBytes)
            content.resize(content.size() * 2 + chunkBytes);
        const ssize_t count = read(descriptor, content.data() + size, content.size() - size);
        if (count == 0)
            break;
        if (count > 0)
            size += static_cast<std::size_t>(count);
        else if (errno != EINTR)
            fail(name, errno);
    }
    content.resize(size);
    return Bytes::adopt(std::move(content));
}

} // namespace

Bytes readInput(const std::string& file) {
    if (file == standardInputName)
        return readToEnd(STDIN_FILENO, "standard input");
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        fail(file, errno);
    const ScopeExit closing([descriptor] { close(descriptor); });
    return readToEnd(descriptor, file);
}

} // namespace tavel
