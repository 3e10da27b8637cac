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

/// A test with a double of the system that nobody has used, after which no object must be left.
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
