#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace tavel {

/// Sets or removes an environment variable of this process for the lifetime of this object. Not thread-safe:
/// no other thread may run.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* const current = std::getenv(name))
            before_ = current;
        assign(value);
    }

    ~EnvironmentVariable() { assign(before_); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    void assign(const std::optional<std::string>& value) const {
        if (value)
            setenv(name_, value->c_str(), 1);
        else
            unsetenv(name_);
    }

    const char* name_;
    std::optional<std::string> before_;
};

} // namespace tavel
