#include "Tests/Support/AgentProcess.h"
#include "Tests/Support/RecordedLines.h"
#include "Tests/Support/TestDirectory.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace tavel {

namespace {

const std::string variable = "TAVEL_TEST_LINES_DIRECTORY";

} // namespace
} // namespace tavel
