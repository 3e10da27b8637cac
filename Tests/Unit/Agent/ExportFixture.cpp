#include "Tests/Unit/Agent/ExportFixture.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace tavel {

ExportFixture::ExportFixture() {
    makeWorker();
    std::filesystem::create_directories(worker->exportDirectory());
}

void ExportFixture::copy(std::vector<Representation> item) {
    pasteboard().changeFromOutside({std::move(item)});
}

std::vector<std::string> ExportFixture::namesIn(const std::filesystem::path& directory) {
    Names names;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

std::string ExportFixture::contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void ExportFixture::writeFile(const std::filesystem::path& file, std::string_view content) {
    std::ofstream(file, std::ios::binary) << content;
}

std::vector<std::string> ExportFixture::pathsIn(const Events& events, std::string_view kind) {
    EXPECT_EQ(events.size(), 1U);
    if (events.size() != 1 || events.front().value("kind", "") != kind)
        throw std::runtime_error("There is no such event");
    return events.front().at("paths").get<std::vector<std::string>>();
}

} // namespace tavel
