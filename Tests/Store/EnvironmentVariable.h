#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace tavel {

/// Sets an environment variable of this process, or removes it, for as long as this object lives. Not while
/// other threads run.
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
