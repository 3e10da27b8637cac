#include "Tests/Panel/PanelTest.h"

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace tavel {

bool Screenshot::isMarked(int x, int y) const {
    constexpr int clearly = 40;
    for (int channel = 0; channel < 3; ++channel) {
        const auto at = static_cast<std::size_t>((y * width + x) * 3 + channel);
        const int difference = static_cast<unsigned char>(pixels[at]) -
                               static_cast<unsigned char>(pixels[static_cast<std::size_t>(channel)]);
        if (std::abs(difference) > clearly)
            return true;
    }
    return false;
}

Area Screenshot::markedPart(const Area& part) const {
    int left = width;
    int top = height;
    int right = 0;
    int bottom = 0;
    for (int y = part.y; y < part.y + part.height; ++y) {
        for (int x = part.x; x < part.x + part.width; ++x) {
            if (!isMarked(x, y))
                continue;
            left = std::min(left, x);
            top = std::min(top, y);
            right = std::max(right, x + 1);
            bottom = std::max(bottom, y + 1);
        }
    }
    return right == 0 ? Area{} : Area{left, top, right - left, bottom - top};
}

void PanelTest::TearDown() {
    if (program_ != nullptr) {
        EXPECT_EQ(program_->waitForExit(), 0);
        EXPECT_EQ(errorOutput(), "");
    }
    windowManager_.reset();
}

void PanelTest::startWindowManager(int left, int bottom) {
    std::ifstream standard("/etc/xdg/openbox/rc.xml");
    std::string settings{std::istreambuf_iterator<char>(standard), {}};
    const std::string margins = "<margins>";
    const std::size_t place = settings.find(margins);
    if (place == std::string::npos)
        throw std::runtime_error("Openbox has no settings with margins. Is the package openbox installed?");
    settings.replace(settings.find("<left>", place), std::string("<left>0").size(),
                     "<left>" + std::to_string(left));
    settings.replace(settings.find("<bottom>", place), std::string("<bottom>0").size(),
                     "<bottom>" + std::to_string(bottom));
    const auto file = directory_.createFile("openbox.xml", settings);
    windowManager_ = std::make_unique<TestProcess>(std::vector<std::string>{
        "/bin/sh", "-c", "DISPLAY=$0 HOME=$1 exec openbox --sm-disable --config-file $2 2>/dev/null",
        server_.display(), directory_.path().string(), file.string()});
    waitUntil([&] { return run("xprop -root _NET_SUPPORTING_WM_CHECK").find("0x") != std::string::npos; },
              panelDeadline);
}

void PanelTest::startProgram(const std::map<std::string, std::string>& environment,
                             const std::string& panelProgram) {
    std::map<std::string, std::string> variables{{"DISPLAY", server_.display()},
                                                 {"HOME", directory_.path().string()},
                                                 {"XDG_RUNTIME_DIR", directory_.runtimeDirectory().string()},
                                                 {"LC_ALL", "C.UTF-8"},
                                                 // There is no desktop bus.
                                                 {"DBUS_SESSION_BUS_ADDRESS", "disabled:"},
                                                 {"NO_AT_BRIDGE", "1"}};
    for (const auto& [name, value] : environment)
        variables[name] = value;
    std::vector<std::string> command{"/bin/sh", "-c", R"(errors=$0; exec "$@" 2>"$errors")",
                                     (directory_.path() / "errors").string(), "/usr/bin/env"};
    for (const auto& [name, value] : variables)
        command.push_back(std::string(name).append("=").append(value));
    command.emplace_back(TAVEL_PANEL_PROGRAM);
    if (!panelProgram.empty())
        command.push_back(panelProgram);
    program_ = std::make_unique<TestProcess>(command);
}

void PanelTest::killProgram() {
    program_->kill();
    program_.reset();
}

std::vector<pid_t> PanelTest::panelProcesses() {
    const std::string process = ask("process");
    std::ifstream children("/proc/" + process + "/task/" + process + "/children");
    if (!children)
        throw std::runtime_error("The system does not tell of child processes.");
    return {std::istream_iterator<pid_t>(children), {}};
}

void PanelTest::awaitNoPanelProcess() {
    waitUntil([&] { return panelProcesses().empty(); }, panelDeadline);
}

void PanelTest::openPanel(const std::string& stem) {
    startWindowManager();
    startProgram();
    ASSERT_EQ(ask("open " + stem), "done");
}

void PanelTest::show() {
    ASSERT_EQ(ask("show"), "done");
    awaitFocus();
}

std::string PanelTest::next() {
    auto line = program_->nextLine();
    if (!line)
        throw std::runtime_error("The program ended: " + errorOutput());
    return *line;
}

std::string PanelTest::nextAction() {
    std::string line = next();
    while (line.starts_with("log tavel-panel: "))
        line = next();
    return line;
}

std::string PanelTest::ask(const std::string& command) {
    program_->sendLine(command);
    return next();
}

void PanelTest::expectQuiet() {
    const std::chrono::microseconds before(std::stoll(ask("processor-time")));
    constexpr std::chrono::milliseconds watched{500};
    std::this_thread::sleep_for(watched); // idling is what the test measures
    const std::chrono::microseconds after(std::stoll(ask("processor-time")));
    EXPECT_LT(after - before, watched / 5);
}

std::string PanelTest::run(const std::string& command) const {
    const std::string line = "export DISPLAY=" + server_.display() + "; timeout 30 " + command;
    std::FILE* const pipe = popen(line.c_str(), "r"); // NOLINT(cert-env33-c)
    if (pipe == nullptr)
        throw std::runtime_error("No shell can be started.");
    std::string output;
    char buffer[4096];
    for (std::size_t size = 0; (size = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0;)
        output.append(buffer, size);
    if (const int status = pclose(pipe); status != 0)
        ADD_FAILURE() << command << " fails with the status " << WEXITSTATUS(status) << ": " << output;
    return output;
}

std::string PanelTest::windowTitled(const std::string& wanted) const {
    std::string number;
    const std::string search = "xdotool search --onlyvisible --name '^" + wanted + "$' 2>/dev/null || true";
    waitUntil([&] { return !(number = run(search)).empty(); }, panelDeadline);
    return number.substr(0, number.find('\n'));
}

bool PanelTest::isPanelOnScreen() const {
    return !run(std::string("xdotool search --onlyvisible --name '^") + title + "$' 2>/dev/null || true")
                .empty();
}

std::string PanelTest::focusedWindow() const {
    const std::string number = run("xdotool getwindowfocus 2>/dev/null || true");
    return number.substr(0, number.find('\n'));
}

void PanelTest::awaitFocus() const {
    const std::string panel = windowTitled(title);
    waitUntil([&] { return focusedWindow() == panel; }, panelDeadline);
}

void PanelTest::expectText(const std::string& text) {
    press("Return");
    EXPECT_EQ(next(), "confirm " + text);
}

int PanelTest::windowFigure(const std::string& name) const {
    const std::string description = run("xwininfo -id " + windowTitled(title));
    const std::size_t place = description.find(name + ":");
    if (place == std::string::npos)
        throw std::runtime_error("xwininfo does not tell " + name);
    return std::stoi(description.substr(place + name.size() + 1));
}

std::string PanelTest::windowProperty(const std::string& name) const {
    return run("xprop -id " + windowTitled(title) + " " + name);
}

Screenshot PanelTest::takeScreenshot() const {
    std::istringstream image(run("import -window " + windowTitled(title) + " -depth 8 ppm:-"));
    Screenshot screenshot;
    std::string kind;
    int largest = 0;
    image >> kind >> screenshot.width >> screenshot.height >> largest;
    image.get();
    screenshot.pixels.assign(std::istreambuf_iterator<char>(image), {});
    const auto size = static_cast<std::size_t>(screenshot.width * screenshot.height * 3);
    if (kind != "P6" || largest != 255 || screenshot.pixels.size() != size)
        throw std::runtime_error("No screenshot can be taken.");
    return screenshot;
}

std::vector<int> PanelTest::frameExtents() const {
    std::string text = windowProperty("_NET_FRAME_EXTENTS");
    text.erase(0, text.find('=') + 1);
    std::replace(text.begin(), text.end(), ',', ' ');
    std::istringstream numbers(text);
    return {std::istream_iterator<int>(numbers), {}};
}

std::string PanelTest::errorOutput() const {
    std::ifstream file(directory_.path() / "errors");
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace tavel
