#pragma once

#include "Tests/Mac/Double/Accessibility.h"
#include "Tests/Mac/Double/Application.h"
#include "Tests/Mac/Double/CoreObjects.h"
#include "Tests/Mac/Double/ImageFiles.h"
#include "Tests/Mac/Double/MainLoop.h"
#include "Tests/Mac/Double/QuartzEvents.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace tavel::doubles {

/// A test that starts with the double in its initial state and fails if it leaves an object behind.
class DoubledMac : public testing::Test {
protected:
    DoubledMac() {
        resetMainLoop();
        resetApplication();
        resetQuartz();
        resetImageFiles();
        programs().clear();
        livingBefore_ = livingObjects();
    }
    ~DoubledMac() override { EXPECT_EQ(livingObjects(), livingBefore_) << "objects that nobody released"; }

private:
    std::size_t livingBefore_ = 0;
};

} // namespace tavel::doubles
