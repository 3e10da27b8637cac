#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>

/// Stands in for the objects of Core Foundation: each is an allocation of its own with a count of references,
/// and goes with the last of them. Whoever uses what is no living object, or one of another type than the
/// function takes, ends the program, where a Mac might as well go on with whatever lies there.
namespace tavel::doubles {

enum Kind : CFTypeID {
    stringKind = 1,
    numberKind,
    booleanKind,
    dictionaryKind,
    dataKind,
    machPortKind,
    sourceKind,
    timerKind,
    runLoopKind,
    eventKind,
    elementKind,
    imageSourceKind,
    imageKind,
    imageDestinationKind,
};

class Object {
public:
    /// With one reference, its maker's.
    explicit Object(Kind kind);
    virtual ~Object();
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    Kind kind() const { return kind_; }

    /// How many references there are to it.
    long references() const;

    /// Whether it is one of the system's constants, which are there for ever.
    virtual bool isConstant() const { return false; }

private:
    friend void retain(CFTypeRef object);
    friend bool losesReference(Object& object);

    const Kind kind_;
    long references_ = 1;
};

/// Of all types. Any thread.
std::size_t livingObjects();

/// Ends the program: it did what a Mac answers with a crash, or worse.
[[noreturn]] void refuse(const char* what);

/// Refused unless it is one.
Object& livingObject(CFTypeRef object);

/// Refused unless it is a living object of that class.
template <typename Class>
Class& objectAt(CFTypeRef object) {
    Object& living = livingObject(object);
    if (living.kind() != Class::ofKind)
        refuse("An object of another type was given.");
    return static_cast<Class&>(living);
}

/// The reference to it that the interfaces pass around.
template <typename Ref>
Ref refTo(Object& object) {
    return static_cast<Ref>(static_cast<void*>(&object));
}

/// Another reference to the object, which may be one of the compiler's constant strings. Any thread.
void retain(CFTypeRef object);

/// A reference that one object has to another, or none.
class Reference {
public:
    Reference() = default;
    explicit Reference(CFTypeRef object) : object_(object) {
        if (object_ != nullptr)
            retain(object_);
    }
    Reference(const Reference& other) : Reference(other.object_) {}
    Reference(Reference&& other) noexcept : object_(other.object_) { other.object_ = nullptr; }
    Reference& operator=(Reference other) noexcept {
        const CFTypeRef object = object_;
        object_ = other.object_;
        other.object_ = object;
        return *this;
    }
    ~Reference() {
        if (object_ != nullptr)
            CFRelease(object_);
    }

    /// Takes over what a function with Create or Copy in its name gives.
    static Reference to(CFTypeRef owned) {
        Reference reference;
        reference.object_ = owned;
        return reference;
    }

    CFTypeRef get() const { return object_; }

private:
    CFTypeRef object_ = nullptr;
};

} // namespace tavel::doubles
