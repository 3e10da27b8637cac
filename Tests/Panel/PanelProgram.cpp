#include "Linux/Base/GlibEventLoop.h"
#include "Linux/Panel/ProcessNamePanelView.h"
#include "Linux/X11Platform.h"

#include <fcntl.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <thread>

/// panel-program [PROGRAM]: a program with a naming panel, which tests control. It reads one command per line
/// and answers each with one line. It also prints a line for everything that the panel reports or logs.
/// PROGRAM replaces tavel-panel.
namespace tavel {
namespace {

class PanelProgram {
public:
    explicit PanelProgram(std::filesystem::path program) : program_(std::move(program)) {}

    int run() {
        std::thread reader([this] { readCommands(); });
        while (!isEnding_)
            loop_.runOnce(std::chrono::seconds(60));
        reader.join();
        view_.reset();
        return 0;
    }

private:
    void readCommands() {
        for (std::string line; std::getline(std::cin, line);)
            loop_.post([this, line] { print(answer(line)); });
        loop_.post([this] { isEnding_ = true; });
    }

    static void print(const std::string& line) {
        std::puts(line.c_str());
        std::fflush(stdout);
    }

    std::string answer(const std::string& line) {
        const std::size_t space = line.find(' ');
        const std::string command = line.substr(0, space);
        const std::string argument = space == std::string::npos ? "" : line.substr(space + 1);
        if (command == "open")
            return open(argument);
        if (command == "destroy-with") { // the argument is the name of an action
            fatalAction_ = argument;
            return "done";
        }
        if (command == "destroy") {
            view_.reset();
            return "done";
        }
        if (command == "open-file") { // without O_CLOEXEC, so that children would inherit it
            return ::open(argument.c_str(), O_RDONLY) < 0 ? "no file" : "done";
        }
        if (command == "use-platform") {
            platform_.emplace(X11Connection::open(nullptr));
            return "done";
        }
        if (command == "process")
            return std::to_string(getpid());
        if (command == "processor-time")
            return processorTime();
        if (command == "locale")
            return localeNames();
        return answerOfView(command, argument);
    }

    std::string answerOfView(const std::string& command, const std::string& argument) {
        if (view_ == nullptr)
            return "no view";
        if (command == "text")
            return view_->enteredText();
        if (command == "surroundings")
            return describe(view_->surroundings());
        if (command == "show")
            view_->show();
        else if (command == "hide")
            view_->hide();
        else if (command == "show-and-hide") {
            view_->show();
            view_->hide();
        } else if (command == "hint")
            view_->showHint(argument);
        else if (command == "origin")
            view_->setOrigin(pointIn(argument));
        else
            return "unknown command";
        return "done";
    }

    std::string open(const std::string& stem) {
        const NamePanelTexts texts{"Nommer avant de coller",
                                   "Extension conserv\xC3\xA9"
                                   "e : .png",
                                   stem, "Annuler", "Coller"};
        const NamePanelActions actions{[this] { report("confirm", " " + view_->enteredText()); },
                                       [this] { report("cancel", ""); }};
        const auto log = [](const std::string& message) { print("log " + message); };
        view_.reset();
        if (platform_) {
            view_ = platform_->makeNamePanelView(texts, actions);
            return view_ == nullptr ? "no view" : "done";
        }
        const auto copied = [](const std::string& text) { print("copy " + text); };
        view_ = program_.empty() ? makeProcessNamePanelView(texts, actions, copied, log)
                                 : makeProcessNamePanelView(texts, actions, copied, log, program_);
        return view_ == nullptr ? "no view" : "done";
    }

    void report(const std::string& action, const std::string& text) {
        print(action + text);
        if (fatalAction_ == action)
            view_.reset();
    }

    static ScreenPoint pointIn(const std::string& text) {
        ScreenPoint point;
        std::istringstream(text) >> point.x >> point.y;
        return point;
    }

    static std::string describe(const ScreenSurroundings& surroundings) {
        std::ostringstream text;
        text << "pointer " << surroundings.pointer.x << ' ' << surroundings.pointer.y;
        for (const Screen& screen : surroundings.screens)
            for (const ScreenRectangle& place : {screen.frame, screen.visibleFrame})
                text << " | " << place.x << ' ' << place.y << ' ' << place.width << ' ' << place.height;
        text << " | window " << surroundings.window.width << ' ' << surroundings.window.height;
        return text.str();
    }

    /// The processor time of this process so far, in microseconds.
    static std::string processorTime() {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return std::to_string(time.tv_sec * 1'000'000 + time.tv_nsec / 1000);
    }

    static std::string localeNames() {
        return std::string(std::setlocale(LC_NUMERIC, nullptr)) + ' ' + std::setlocale(LC_TIME, nullptr) +
               ' ' + std::setlocale(LC_CTYPE, nullptr);
    }

    std::filesystem::path program_;
    GlibEventLoop loop_;
    std::optional<X11Platform> platform_; // instead of the panel alone
    std::unique_ptr<NamePanelView> view_;
    std::string fatalAction_;
    bool isEnding_ = false;
};

} // namespace
} // namespace tavel

int main(int argc, char** argv) {
    return tavel::PanelProgram(argc > 1 ? argv[1] : "").run();
}
