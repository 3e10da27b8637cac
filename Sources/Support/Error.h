#pragma once

#include <exception>
#include <string>
#include <utility>

namespace tavel {

/// A failure with a cause that its handler may examine. The domain names the source of the codes ("Tavel",
/// "POSIX", "LMDB"). The description is for people to read.
class Error : public std::exception {
public:
    Error(std::string domain, int code, std::string description)
        : domain_(std::move(domain)), code_(code), description_(std::move(description)) {}

    const std::string& domain() const { return domain_; }
    int code() const { return code_; }
    const std::string& description() const { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }

private:
    std::string domain_;
    int code_;
    std::string description_;
};

} // namespace tavel
