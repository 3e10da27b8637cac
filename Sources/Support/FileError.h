#pragma once

#include "Support/Error.h"

#include <string>
#include <system_error>
#include <utility>

namespace tavel {

/// A failed system call on a file. The domain is "POSIX", the code an errno value.
class FileError : public Error {
public:
    enum class Operation { read, write };

    FileError(Operation operation, int code, std::string path)
        : Error("POSIX", code, path + ": " + reasonOf(code)), operation_(operation), path_(std::move(path)) {}

    Operation operation() const { return operation_; }
    const std::string& path() const { return path_; }

    /// The description without the path.
    std::string reason() const { return reasonOf(code()); }

private:
    static std::string reasonOf(int code) { return std::generic_category().message(code); }

    Operation operation_;
    std::string path_;
};

} // namespace tavel
