#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace tavel {

/// Owns one reference to a Core Foundation object, or is null. `Ref` is the reference type, such as
/// CFStringRef.
template <typename Ref>
class CFRef {
public:
    CFRef() = default;

    /// Takes over the caller's reference, as returned by a function with Create or Copy in its name. May be
    /// null.
    static CFRef adopt(CF_CONSUMED Ref object) { return CFRef(object); }

    CFRef(const CFRef&) = delete;
    CFRef(CFRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    CFRef& operator=(const CFRef&) = delete;
    CFRef& operator=(CFRef&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~CFRef() {
        if (object_ != nullptr)
            CFRelease(object_);
    }

    Ref get() const CF_RETURNS_NOT_RETAINED { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    explicit CFRef(Ref owned) : object_(owned) {}

    Ref object_ = nullptr;
};

} // namespace tavel
