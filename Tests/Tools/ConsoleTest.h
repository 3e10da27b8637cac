#pragma once

#include "Tests/Tools/RunningTool.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// Runs the console with its agent over pipes, and tavel-pasteboard as another application.
class ConsoleTest : public testing::Test {
protected:
    ToolResult session(std::string_view input, std::vector<std::string> arguments = {}) const {
        arguments.insert(arguments.begin(), TAVEL_CONSOLE);
        return runTool(world_, arguments, input);
    }

    /// Expects success; returns the output.
    std::string output(std::string_view input, const std::vector<std::string>& arguments = {}) const {
        const ToolResult result = session(input, arguments);
        EXPECT_EQ(result.status, 0);
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
