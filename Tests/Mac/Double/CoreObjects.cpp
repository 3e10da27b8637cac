#include "Tests/Mac/Double/CoreObjects.h"

#include "Tests/Mac/Double/ConstantString.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <unordered_map>

namespace tavel::doubles {

namespace {

/// References are counted under its lock: they come and go on every thread.
struct Census {
    std::mutex lock;
    std::unordered_map<const void*, Object*> living;
};

Census& census() {
    static Census census;
    return census;
}

/// Null if it is none. What was freed is looked at here, for AddressSanitizer to say where that was.
Object* livingOrNull(CFTypeRef object) {
    if (object == nullptr)
        refuse("Null was given for an object.");
    Census& all = census();
    const std::lock_guard guard(all.lock);
    const auto found = all.living.find(object);
    if (found != all.living.end())
        return found->second;
    if (!isConstantString(object))
        refuse("What was given is no object, or no longer.");
    return nullptr;
}

} // namespace

Object::Object(Kind kind) : kind_(kind) {
    Census& all = census();
    const std::lock_guard guard(all.lock);
    all.living.emplace(this, this);
}

Object::~Object() {
    Census& all = census();
    const std::lock_guard guard(all.lock);
    all.living.erase(this);
}

long Object::references() const {
    const std::lock_guard guard(census().lock);
    return references_;
}

std::size_t livingObjects() {
    Census& all = census();
    const std::lock_guard guard(all.lock);
    return all.living.size();
}

void refuse(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

Object& livingObject(CFTypeRef object) {
    Object* const living = livingOrNull(object);
    if (living == nullptr)
        refuse("A constant string was given for another object.");
    return *living;
}

void retain(CFTypeRef object) {
    if (Object* const living = livingOrNull(object)) {
        const std::lock_guard guard(census().lock);
        ++living->references_;
    }
}

/// Whether that was its last one.
bool losesReference(Object& object) {
    const std::lock_guard guard(census().lock);
    return --object.references_ == 0;
}

} // namespace tavel::doubles

using namespace tavel::doubles;

namespace {

constexpr char nullAllocator = 0;

} // namespace

const CFAllocatorRef kCFAllocatorDefault = nullptr;
/// Gives no memory, and takes none back.
const CFAllocatorRef kCFAllocatorNull = static_cast<CFAllocatorRef>(static_cast<const void*>(&nullAllocator));

void CFRelease(CFTypeRef object) {
    Object* const living = livingOrNull(object);
    if (living != nullptr && !living->isConstant() && losesReference(*living))
        delete living;
}

CFTypeID CFGetTypeID(CFTypeRef object) {
    const Object* const living = livingOrNull(object);
    return living == nullptr ? CFStringGetTypeID() : CFTypeID{living->kind()};
}
