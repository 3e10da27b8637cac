#pragma once

#include "Tests/Tools/RunningTool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tavel {

/// The console's doctor in a world without a display; tests add one.
class DoctorTest : public testing::Test {
protected:
    ToolResult doctor(std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {TAVEL_CONSOLE, "doctor"});
        return runTool(world_, options);
    }

    /// The report. Expects that status.
    std::string report(int status, const std::vector<std::string>& options = {}) const {
        const ToolResult result = doctor(options);
        EXPECT_EQ(result.status, status) << result.output;
        EXPECT_EQ(result.errors, "");
        return result.output;
    }

    std::string pasteboard(std::vector<std::string> arguments, std::string_view input = {}) const {
        arguments.insert(arguments.begin(), TAVEL_PASTEBOARD);
        const ToolResult result = runTool(world_, arguments, input);
        EXPECT_EQ(result.status, 0) << result.errors;
        return result.output;
    }

    World world_;
};

} // namespace tavel
