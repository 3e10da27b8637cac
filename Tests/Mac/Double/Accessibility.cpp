#include "Tests/Mac/Double/Accessibility.h"

#include "Tests/Mac/Double/CoreObjects.h"

#include <utility>

using namespace tavel::doubles;

namespace {

constexpr float systemsTimeout = 6; // seconds, until a client sets another

/// Each reference to an element is a separate object with its own time-out.
struct Element final : Object {
    static constexpr Kind ofKind = elementKind;
    explicit Element(Accessible::Part itsPart) : Object(ofKind), part(std::move(itsPart)) {}
    const Accessible::Part part; // null if the program does not exist
    float timeout = systemsTimeout;
};

bool answersInTime(const Element& element) {
    return element.part != nullptr &&
           std::chrono::duration<float>(element.part->delay).count() <= element.timeout;
}

CFTypeRef createObject(const std::variant<Accessible::Part, Value, AXError>& attribute) {
    if (const auto* const part = std::get_if<Accessible::Part>(&attribute))
        return refTo<CFTypeRef>(*new Element(*part));
    return tavel::doubles::createObject(std::get<Value>(attribute));
}

} // namespace

namespace tavel::doubles {

std::map<pid_t, Accessible::Part>& programs() {
    static std::map<pid_t, Accessible::Part> programs;
    return programs;
}

} // namespace tavel::doubles

CFTypeID AXUIElementGetTypeID() {
    return elementKind;
}

/// Succeeds for every process identifier, even if no process has it.
AXUIElementRef AXUIElementCreateApplication(pid_t process) {
    const auto found = programs().find(process);
    return refTo<AXUIElementRef>(*new Element(found == programs().end() ? nullptr : found->second));
}

/// Zero restores the system's time-out.
AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float seconds) {
    objectAt<Element>(element).timeout = seconds == 0 ? systemsTimeout : seconds;
    return kAXErrorSuccess;
}

/// Leaves `value` unchanged on an error.
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute, CFTypeRef* value) {
    const auto& asked = objectAt<Element>(element);
    if (!answersInTime(asked))
        return noAnswerInTime;
    const auto found = asked.part->attributes.find(textOf(attribute));
    if (found == asked.part->attributes.end())
        return noSuchAttribute;
    if (const auto* const error = std::get_if<AXError>(&found->second))
        return *error;
    *value = createObject(found->second);
    return kAXErrorSuccess;
}
