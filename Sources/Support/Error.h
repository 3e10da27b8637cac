#pragma once

#include <exception>
#include <string>
#include <utility>

namespace tavel {

/// A failure whose cause matters to whoever catches it. The domain names who numbers the codes ("Tavel",
/// "POSIX", "LMDB"); the description is meant for people.
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
