#include "Tests/Mac/Double/CoreObjects.h"

#include "Tests/Mac/Double/ConstantString.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <unordered_map>

namespace tavel::doubles {

namespace {

/// All living objects. The lock also guards the reference counts, which change on any thread.
struct Registry {
    std::mutex lock;
    std::unordered_map<const void*, Object*> living;
};

Registry& registry() {
    static Registry registry;
    return registry;
}

/// Null for a constant string; ends the program if it is no object. Reads the memory of a freed object on
/// purpose: AddressSanitizer then reports where it was freed.
Object* livingOrNull(CFTypeRef object) {
    if (object == nullptr)
        refuse("An object is null.");
    Registry& all = registry();
    const std::lock_guard guard(all.lock);
    const auto found = all.living.find(object);
    if (found != all.living.end())
        return found->second;
    if (!isConstantString(object))
        refuse("This is not a living object.");
    return nullptr;
}

} // namespace

Object::Object(Kind kind) : kind_(kind) {
    Registry& all = registry();
    const std::lock_guard guard(all.lock);
    all.living.emplace(this, this);
}

Object::~Object() {
    Registry& all = registry();
    const std::lock_guard guard(all.lock);
    all.living.erase(this);
}

long Object::references() const {
    const std::lock_guard guard(registry().lock);
    return references_;
}

std::size_t livingObjects() {
    Registry& all = registry();
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
        refuse("A constant string was given as another object.");
    return *living;
}

void retain(CFTypeRef object) {
    if (Object* const living = livingOrNull(object)) {
        const std::lock_guard guard(registry().lock);
        ++living->references_;
    }
}

/// Returns whether that was the last reference.
bool losesReference(Object& object) {
    const std::lock_guard guard(registry().lock);
    return --object.references_ == 0;
}

} // namespace tavel::doubles

using namespace tavel::doubles;

namespace {

constexpr char nullAllocator = 0;

} // namespace

const CFAllocatorRef kCFAllocatorDefault = nullptr;
/// Neither allocates nor frees memory.
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
