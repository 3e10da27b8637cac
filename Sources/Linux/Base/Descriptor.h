#pragma once

#include <unistd.h>

#include <utility>

namespace tavel {

/// Owns a descriptor and closes it. A negative number stands for none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0)
            close(number_);
    }
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&&) = delete;

    explicit operator bool() const { return number_ >= 0; }
    int number() const { return number_; }

    /// Closes the descriptor, and owns this one from now on.
    void reset(int number = -1) {
        if (number_ >= 0)
            close(number_);
        number_ = number;
    }

    /// The caller owns the descriptor from now on.
    int release() { return std::exchange(number_, -1); }

private:
    int number_ = -1;
};

} // namespace tavel
