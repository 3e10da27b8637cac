#include "Tests/Support/RecordedLines.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace tavel {

namespace {

constexpr std::size_t wholeLineBytes = std::size_t{64} * 1024;
constexpr std::size_t longestBytes = std::size_t{4} * 1024 * 1024;
constexpr std::size_t shortRunBytes = std::size_t{8} * 1024;
constexpr std::size_t keptBytes = 1024; // at least so many, at both ends of a run

/// The bytes of the character of base64 at the position: 2 for an escaped slash, 0 for anything else.
std::size_t base64Bytes(std::string_view line, std::size_t position) {
    const char character = line[position];
    if ((character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
        (character >= '0' && character <= '9') || character == '+' || character == '/' || character == '=')
        return 1;
    return line.substr(position, 2) == "\\/" ? 2 : 0;
}

std::string condensedRun(std::string_view run) {
    std::size_t begin = 0;
    while (begin < keptBytes)
        begin += base64Bytes(run, begin);
    std::size_t end = begin;
    std::size_t omitted = 0;
    std::size_t characters = 0;
    for (std::size_t position = begin; position < run.size() - keptBytes;) {
        position += base64Bytes(run, position);
        if (++characters % 4 == 0) {
            end = position;
            omitted = characters;
        }
    }
    return std::string(run.substr(0, begin)) + '\x01' + std::to_string(omitted) + '\x01' +
           std::string(run.substr(end));
}

std::string condensed(std::string_view line) {
    std::string result;
    for (std::size_t begin = 0; begin < line.size();) {
        std::size_t end = begin;
        std::size_t bytes = 0;
        while (end < line.size() && (bytes = base64Bytes(line, end)) > 0)
            end += bytes;
        const std::string_view run = line.substr(begin, end - begin);
        if (run.size() > shortRunBytes)
            result += condensedRun(run);
        else
            result += run;
        if (end < line.size())
            result += line[end];
        begin = end + 1;
        if (result.size() > longestBytes)
            return result.substr(0, keptBytes) + '\x02';
    }
    return result;
}

std::string nameOfTest() {
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    return test != nullptr ? std::string(test->test_suite_name()) + "." + test->name() : "outside of a test";
}

} // namespace

RecordedLines::RecordedLines() {
    const char* const directory = std::getenv("TAVEL_TEST_LINES_DIRECTORY");
    if (directory == nullptr)
        return;
    std::filesystem::create_directories(directory);
    std::string path = std::string(directory) + "/XXXXXX.lines";
    const int descriptor = mkstemps(path.data(), 6);
    if (descriptor >= 0)
        close(descriptor);
    file_.open(path, std::ios::binary);
    if (!file_)
        throw std::runtime_error("Lines cannot be recorded in " + path);
    file_ << "# " << nameOfTest() << '\n';
}

void RecordedLines::sent(std::string_view bytes) {
    if (!file_.is_open())
        return;
    for (std::size_t feed = bytes.find('\n'); feed != std::string_view::npos; feed = bytes.find('\n')) {
        if (begunLine_.empty()) {
            write("> ", bytes.substr(0, feed)); // without a copy of a long line
        } else {
            begunLine_ += bytes.substr(0, feed);
            write("> ", begunLine_);
            begunLine_.clear();
        }
        bytes.remove_prefix(feed + 1);
    }
    begunLine_ += bytes;
}

void RecordedLines::endInput() {
    if (!begunLine_.empty())
        write("> ", begunLine_);
    begunLine_.clear();
}

void RecordedLines::received(std::string_view line) {
    if (file_.is_open())
        write("< ", line);
}

void RecordedLines::write(std::string_view direction, std::string_view line) {
    file_ << direction;
    if (line.size() > wholeLineBytes)
        file_ << condensed(line);
    else
        file_ << line;
    file_ << '\n';
}

} // namespace tavel
