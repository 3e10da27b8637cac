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
        : Error("POSIX", code, path + ": " + std::generic_category().message(code)), operation_(operation),
          path_(std::move(path)) {}

    Operation operation() const { return operation_; }
    const std::string& path() const { return path_; }

private:
    Operation operation_;
    std::string path_;
};

} // namespace tavel
