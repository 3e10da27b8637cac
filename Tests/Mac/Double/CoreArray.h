#pragma once

#include "Tests/Mac/Double/CoreObjects.h"

#include <vector>

namespace tavel::doubles {

/// A double of CFArray. It retains its values if it was given the callbacks for it, and otherwise only
/// borrows them.
struct Array final : Object {
    static constexpr Kind ofKind = arrayKind;
    Array() : Object(ofKind) {}
    std::vector<CFTypeRef> values;
    std::vector<Reference> held;
};

} // namespace tavel::doubles
