#include "Support/LineReader.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/TemporaryFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <new>
#include <string>
#include <string_view>

namespace tavel {
namespace {

/// The C library keeps 64 MiB of addresses for each thread that ran before, so the lines are longer.
constexpr std::size_t longestPayload = 60'000'000;

/// The beginning of a line, up to the end of its string's characters.
std::string stringOf(std::size_t size, char character) {
    std::string line = R"({"a":")";
    line.resize(line.size() + size, character);
    return line;
}

/// Leaves this process that many addresses beyond those that it has.
bool limitAddresses(std::size_t more) {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlimit limit{pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + more, RLIM_INFINITY};
    return pages > 0 && setrlimit(RLIMIT_AS, &limit) == 0;
}

/// Whether there is no memory for the first line, also at a second attempt, and the one behind it is "{}".
bool dropsOnlyTheFirstLine(LineReader& reader) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        try {
            static_cast<void>(reader.next());
            return false;
        } catch (const std::bad_alloc&) {
            continue;
        }
    }
    reader.skipLine();
    const auto next = reader.next();
    return next && std::string_view(next->text.data(), next->text.size()) == "{}" && !reader.next();
}

void expectToDropOnlyTheFirstLine(const std::string& line, std::size_t addresses) {
    const TemporaryFile file(line + "\n{}\n");
    EXPECT_EQ(exitStatusOf([&] {
                  LineReader reader(file.descriptor(), longestPayload);
                  return limitAddresses(addresses) && dropsOnlyTheFirstLine(reader) ? 0 : 1;
              }),
              0);
}

TEST(LineReaderMemory, lacksForALongLine) {
    expectToDropOnlyTheFirstLine(stringOf(79'000'000, '.') + "\"}", 10'000'000);
}

TEST(LineReaderMemory, lacksForAPayloadThatIsNone) {
    expectToDropOnlyTheFirstLine(stringOf(79'000'000, 'A') + "*\"}", longestPayload + 10'000'000);
}

TEST(LineReaderMemory, lacksForAPayloadThatDoesNotEnd) {
    expectToDropOnlyTheFirstLine(stringOf(79'000'000, 'A'), longestPayload + 10'000'000);
}

TEST(LineReaderMemory, lacksForAPayloadButNotForItsText) {
    const std::string line = stringOf(200'000, 'A') + "\"}";
    const TemporaryFile file(line + "\n");
    EXPECT_EQ(exitStatusOf([&] {
                  LineReader reader(file.descriptor(), longestPayload);
                  if (!limitAddresses(longestPayload / 2))
                      return 1;
                  const auto read = reader.next();
                  return read && !read->payload && read->text.size() == line.size() ? 0 : 1;
              }),
              0);
}

} // namespace
} // namespace tavel
