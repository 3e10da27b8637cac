#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>

/// A double of Core Foundation's objects: separate allocations with reference counts, freed with the last
/// reference. Passing anything but a living object of the function's type ends the program, where a Mac might
/// go on with whatever the memory holds.
namespace tavel::doubles {

enum Kind : CFTypeID {
    stringKind = 1,
    numberKind,
    booleanKind,
    dictionaryKind,
    arrayKind,
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
    /// Starts with one reference, the creator's.
    explicit Object(Kind kind);
    virtual ~Object();
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    Kind kind() const { return kind_; }

    /// The current reference count.
    long references() const;

    /// Whether it is one of the system's constants, which are never freed.
    virtual bool isConstant() const { return false; }

private:
    friend void retain(CFTypeRef object);
    friend bool losesReference(Object& object);

    const Kind kind_;
    long references_ = 1;
};

/// The number of living objects of all types. Any thread.
std::size_t livingObjects();

/// Ends the program with this message: the caller broke a rule that a Mac may answer with a crash.
[[noreturn]] void refuse(const char* what);

/// The object behind the reference. Ends the program if it is not a living object.
Object& livingObject(CFTypeRef object);

/// The same, also if it is not of that class.
template <typename Class>
Class& objectAt(CFTypeRef object) {
    Object& living = livingObject(object);
    if (living.kind() != Class::ofKind)
        refuse("An object of another type was given.");
    return static_cast<Class&>(living);
}

/// The object as the type that the C interfaces pass around.
template <typename Ref>
Ref refTo(Object& object) {
    return static_cast<Ref>(static_cast<void*>(&object));
}

/// Adds a reference to the object, which may be a constant string. Any thread.
void retain(CFTypeRef object);

/// Owns a reference to an object, or is null.
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

    /// Takes over the caller's reference, as returned by a function with Create or Copy in its name.
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
