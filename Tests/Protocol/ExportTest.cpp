#include "Tests/Protocol/ExportTest.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tavel {

namespace {

namespace fs = std::filesystem;

/// A big-endian number of four bytes (PNG, section 7.1).
std::uint32_t numberAt(std::string_view bytes, std::size_t offset) {
    std::uint32_t number = 0;
    for (const char byte : bytes.substr(offset, 4))
        number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

} // namespace

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw std::runtime_error(file.string() + " cannot be read.");
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string readPicture(std::string_view name) {
    return contentOf(fs::path(TAVEL_TEST_PICTURES) / name);
}

std::string pngSize(const fs::path& file) {
    const std::string content = contentOf(file);
    if (content.size() < 24 || !content.starts_with("\x89PNG\r\n\x1A\n"))
        throw std::runtime_error(file.string() + " is no PNG file.");
    return std::to_string(numberAt(content, 16)) + "x" + std::to_string(numberAt(content, 20));
}

ExportTest::Paths ExportTest::exportOf(std::string_view kind, const std::vector<Representation>& item) {
    const std::int64_t sequence = copy(item);
    EXPECT_EQ(agent().nextMessage(), announcement(sequence));
    const Json event = agent().nextMessage();
    EXPECT_EQ(event.value("kind", ""), kind) << event;
    const auto paths = event.value("paths", std::vector<std::string>());
    EXPECT_EQ(
        event,
        Json(
            {{"event", "change"}, {"kind", kind}, {"paths", paths}, {"marker", ""}, {"sequence", sequence}}));
    return {paths.begin(), paths.end()};
}

void ExportTest::expectWarning(const std::vector<Representation>& item, std::string_view message) {
    EXPECT_EQ(agent().nextMessage(), announcement(copy(item)));
    EXPECT_EQ(agent().nextMessage(), warning(message));
    expectNextCopyReported();
}

void ExportTest::expectAnnouncedOnly(const std::vector<Representation>& item) {
    EXPECT_EQ(agent().nextMessage(), announcement(copy(item)));
    expectNextCopyReported();
}

void ExportTest::expectNextCopyReported() {
    waitForPolls();
    const std::int64_t sequence = otherApplication().copyText("hi");
    EXPECT_EQ(agent().nextMessage(), announcement(sequence));
    EXPECT_EQ(agent().nextMessage(), textEvent("aGk", 2, sequence));
}

std::vector<std::string> ExportTest::namesOf(const Paths& paths) {
    std::vector<std::string> names;
    for (const fs::path& path : paths)
        names.push_back(path.filename().string());
    return names;
}

std::vector<std::string> ExportTest::namesIn(const fs::path& directory) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

} // namespace tavel
