#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include "TavelClipboardAgent/HomePlatformError.h"

#include <iterator>
#include <optional>
#include <stdexcept>
#include <utility>
#include <variant>

namespace tavel {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

FilePasteFixture::FilePasteFixture() {
    restoreFocus();
    pasteboard().copyFromOutside("Bonjour");
    paste =
        std::make_shared<FilePaste>(platform, platform.pasteboard, std::make_shared<ExportDirectory>(root),
                                    [this](std::int64_t count) { changes.push_back(count); });
}

void FilePasteFixture::restoreFocus() {
    platform.focus.frontmost = RunningApplication{fileManager, "com.apple.finder"};
    platform.focus.trusted = true;
    platform.focus.role = "AXList";
}

bool FilePasteFixture::typeShortcut() {
    const KeyVerdict pressed = press();
    EXPECT_EQ(release(), pressed) << "whoever gets the press also gets the release";
    return pressed == KeyVerdict::swallow;
}

PanelWindow& FilePasteFixture::openPanel() {
    const std::size_t before = platform.panels.size();
    EXPECT_TRUE(typeShortcut());
    wait(120ms);
    if (platform.panels.size() != before + 1)
        throw std::logic_error("No panel opened");
    return panel();
}

void FilePasteFixture::confirm(std::string_view stem) {
    panel().entered = stem;
    panel().actions.confirm();
}

void FilePasteFixture::pasteAs(std::string_view stem) {
    openPanel();
    confirm(stem);
    wait(150ms);
}

void FilePasteFixture::copy(PasteboardItem item) {
    pasteboard().changeFromOutside({std::move(item)});
}

void FilePasteFixture::copy(std::string_view type, std::string_view content) {
    copy(PasteboardItem{representation(type, content)});
}

void FilePasteFixture::startOver() {
    static_cast<void>(release());
    switchOff();
    wait(1s);
    restoreFocus();
    switchOn();
}

std::vector<FilePasteFixture::Change> FilePasteFixture::focusMoves() {
    ScriptedFocusProbe& focus = platform.focus;
    return {
        {"another file manager", [&] { focus.frontmost->processIdentifier = fileManager + 1; }},
        {"another program", [&] { focus.frontmost->bundleIdentifier = "com.apple.TextEdit"; }},
        {"no program", [&] { focus.frontmost = std::nullopt; }},
        {"another role", [&] { focus.role = "AXTextField"; }},
        {"no role", [&] { focus.role = std::nullopt; }},
        {"no trust", [&] { focus.trusted = false; }},
    };
}

FileData FilePasteFixture::fileData() {
    std::optional<FileDataSearch::Outcome> outcome;
    const auto search = FileDataSearch::start(
        pasteboard(), platform.codec, [&](FileDataSearch::Outcome found) { outcome = std::move(found); });
    EXPECT_EQ(search, nullptr) << "nobody has to be waited for";
    if (const auto* const error = std::get_if<Error>(&outcome.value()))
        throw Error(*error);
    return std::get<FileData>(*std::move(outcome));
}

bool FilePasteFixture::isPanelOpen() const {
    return !platform.panels.empty() && platform.panels.back()->shown;
}

std::vector<fs::path> FilePasteFixture::files() const {
    std::vector<fs::path> files;
    if (!fs::exists(root))
        return files;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        if (!entry.is_directory())
            files.push_back(entry.path());
    }
    return files;
}

std::size_t FilePasteFixture::directoryCount() const {
    if (!fs::exists(root))
        return 0;
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(root), fs::directory_iterator()));
}

bool FilePasteFixture::nothingHappened() const {
    return directoryCount() == 0 && platform.tap.posted.empty() && changes.empty() && platform.logged.empty();
}

bool FilePasteFixture::loggedFailure(std::string_view domainAndCode) const {
    const std::string beginning =
        "Tavel : préparation du fichier impossible (" + std::string(domainAndCode) + ", ";
    return platform.logged.size() == 1 && platform.logged.front().starts_with(beginning);
}

Representation FilePasteFixture::representation(std::string_view type, std::string_view content) {
    return {std::string(type), Bytes::copyOf(content)};
}

std::string errorOf(const std::function<void()>& action) {
    try {
        action();
        return {};
    } catch (const Error& error) {
        const Error shown = homePlatformError(error);
        return shown.domain() + " " + std::to_string(shown.code());
    }
}

} // namespace tavel
