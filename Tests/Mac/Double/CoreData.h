#pragma once

#include "Tests/Mac/Double/CoreObjects.h"

#include <string>

namespace tavel::doubles {

/// CFData: bytes of its own, or somebody else's, which are neither copied nor kept alive.
struct Data final : Object {
    static constexpr Kind ofKind = dataKind;
    Data() : Object(ofKind) {}
    ~Data() override;

    const UInt8* bytes() const { return lent == nullptr ? reinterpret_cast<const UInt8*>(own.data()) : lent; }
    CFIndex size() const { return lent == nullptr ? static_cast<CFIndex>(own.size()) : lentSize; }

    std::string own;
    const UInt8* lent = nullptr;
    CFIndex lentSize = 0;
    bool freesLent = false; // with the allocator of malloc
};

} // namespace tavel::doubles
