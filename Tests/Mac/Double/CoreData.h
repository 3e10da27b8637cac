#pragma once

#include "Tests/Mac/Double/CoreObjects.h"

#include <string>

namespace tavel::doubles {

/// A double of CFData: bytes of its own, or borrowed ones, which it neither copies nor keeps alive.
struct Data final : Object {
    static constexpr Kind ofKind = dataKind;
    Data() : Object(ofKind) {}
    ~Data() override;

    const UInt8* bytes() const {
        return borrowed == nullptr ? reinterpret_cast<const UInt8*>(own.data()) : borrowed;
    }
    CFIndex size() const { return borrowed == nullptr ? static_cast<CFIndex>(own.size()) : borrowedSize; }

    std::string own;
    const UInt8* borrowed = nullptr;
    CFIndex borrowedSize = 0;
    bool freesBorrowed = false; // with free()
};

} // namespace tavel::doubles
