#include "Tests/Mac/Gnustep/PanelDesktop.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <sstream>

namespace tavel {

std::string onDesktop(const std::string& command) {
    std::FILE* const pipe = popen(("timeout 30 " + command).c_str(), "r"); // NOLINT(cert-env33-c)
    if (pipe == nullptr)
        throw std::runtime_error("No shell can be started.");
    std::string output;
    std::array<char, 4096> buffer{};
    for (std::size_t size = 0; (size = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
        output.append(buffer.data(), size);
    // Deliberate: a missing status is no failure. GNUstep reaps children that are not its own, too.
    if (const int status = pclose(pipe); status > 0)
        ADD_FAILURE() << command << " fails with the status " << WEXITSTATUS(status) << ": " << output;
    return output;
}

std::string windowsTitled(const std::string& title) {
    return onDesktop("xdotool search --onlyvisible --name '^" + title + "$' 2>/dev/null || true");
}

std::string windowTitled(const std::string& title) {
    std::string number = windowsTitled(title);
    if (std::ranges::count(number, '\n') != 1)
        return "";
    number.pop_back();
    return number;
}

std::string focusedWindow() {
    std::string number = onDesktop("xdotool getwindowfocus");
    number.pop_back();
    return number;
}

ScreenArea areaOfFrame(const std::string& window) {
    const std::string description = onDesktop("xwininfo -id " + window);
    const auto figure = [&](const std::string& name) {
        const std::size_t place = description.find(name + ":");
        if (place == std::string::npos)
            throw std::runtime_error("xwininfo does not tell " + name);
        return std::stoi(description.substr(place + name.size() + 1));
    };
    std::string text = onDesktop("xprop -id " + window + " _NET_FRAME_EXTENTS");
    text.erase(0, text.find('=') + 1);
    std::ranges::replace(text, ',', ' ');
    std::istringstream numbers(text);
    const std::vector<int> frame{std::istream_iterator<int>(numbers), {}};
    const int left = figure("Absolute upper-left X");
    const int top = figure("Absolute upper-left Y");
    return {left - frame.at(0), top - frame.at(2), left + figure("Width") + frame.at(1),
            top + figure("Height") + frame.at(3)};
}

} // namespace tavel
