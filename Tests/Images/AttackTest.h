#pragma once

#include "Linux/Images/ProcessImageCodec.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// Where a picture is an attack on the program that reads it. When a test ends, no descriptor and no child
/// may be left.
class AttackTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// A PNG or HEIF file, as far as the agent can tell, that orders the attack.
    static Bytes pictureWith(const std::string& order);
    static Bytes heifWith(const std::string& order);

    /// What the attack of that name achieves, from behind the lock or without it. nullopt if there is no
    /// answer in time.
    static std::optional<bool> locked(const std::string& order,
                                      std::chrono::milliseconds limit = std::chrono::seconds(20));
    static std::optional<bool> unlocked(const std::string& order);

    /// The children of this process.
    static std::vector<std::string> children();

    static const std::string lockedProgram;
    static const std::string unlockedProgram;

private:
    std::size_t descriptors_ = 0;
};

} // namespace tavel
