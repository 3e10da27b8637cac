#pragma once

#import <Foundation/Foundation.h>

#include <utility>

namespace tavel {

/// Owns one reference to an Objective-C object, or is nil. The code here counts references manually, so that
/// it also compiles where ARC is missing. Use it on the threads that the object allows.
template <typename T>
class Retained {
public:
    Retained() = default;

    /// Takes over the caller's reference, as returned by a method of the alloc, new or copy family.
    static Retained adopt(NS_CONSUMED T* object) { return Retained(object); }

    /// Adds a reference to an object that somebody else owns, as returned by any other method.
    static Retained retain(T* object) { return Retained([object retain]); }

    Retained(const Retained& other) : object_([other.object_ retain]) {}
    Retained(Retained&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Retained& operator=(Retained other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Retained() { [object_ release]; }

    T* get() const NS_RETURNS_NOT_RETAINED { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    explicit Retained(T* owned) : object_(owned) {}

    T* object_ = nullptr;
};

} // namespace tavel
