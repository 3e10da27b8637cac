#include "Tests/Peers/Peer.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace tavel {

namespace {

using Arguments = std::vector<std::string>;

constexpr unsigned int limitSeconds = 20;

struct Misuse : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Command {
    std::string_view name;
    std::string_view parameters; // "..." after the last: one or more values
    std::size_t parameterCount;
    std::function<bool(Peer&, const Arguments&)> run; // returns false if there is nothing to paste
};

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("Cannot read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string readable(const std::string& path) {
    if (access(path.c_str(), R_OK) != 0)
        throw std::runtime_error("Cannot read " + path);
    return path;
}

std::vector<std::string> absolute(const Arguments& paths) {
    std::vector<std::string> result;
    for (const std::string& path : paths)
        result.push_back(std::filesystem::absolute(path));
    return result;
}

/// Ends every copy command: announces the ownership and serves requestors without a time limit.
bool serve(Peer& peer) {
    alarm(0);
    std::cout << "ready" << std::endl;
    peer.serve();
    return true;
}

bool print(const std::optional<std::string>& bytes) {
    std::cout << bytes.value_or(std::string());
    return bytes.has_value();
}

bool printLines(const std::vector<std::string>& lines) {
    for (const std::string& line : lines)
        std::cout << line << '\n';
    return !lines.empty();
}

const std::vector<Command>& commands() {
    static const std::vector<Command> all = {
        {"copy-text", "TEXT", 1,
         [](Peer& peer, const Arguments& a) { return peer.copyText(a[0]), serve(peer); }},
        {"copy-html", "HTML TEXT", 2,
         [](Peer& peer, const Arguments& a) { return peer.copyHtml(a[0], a[1]), serve(peer); }},
        {"copy-image", "FILE", 1,
         [](Peer& peer, const Arguments& a) { return peer.copyImage(readable(a[0])), serve(peer); }},
        {"copy-files", "PATH...", 1,
         [](Peer& peer, const Arguments& a) { return peer.copyFiles(absolute(a)), serve(peer); }},
        {"copy-bytes", "TYPE FILE", 2,
         [](Peer& peer, const Arguments& a) { return peer.copyBytes(a[0], contentOf(a[1])), serve(peer); }},
        {"paste-text", "", 0, [](Peer& peer, const Arguments&) { return print(peer.pasteText()); }},
        {"paste-html", "", 0, [](Peer& peer, const Arguments&) { return print(peer.pasteHtml()); }},
        {"paste-image", "FILE.png", 1, [](Peer& peer, const Arguments& a) { return peer.pasteImage(a[0]); }},
        {"paste-files", "", 0, [](Peer& peer, const Arguments&) { return printLines(peer.pasteFiles()); }},
        {"paste-bytes", "TYPE", 1,
         [](Peer& peer, const Arguments& a) { return print(peer.pasteBytes(a[0])); }},
        {"targets", "", 0, [](Peer& peer, const Arguments&) { return printLines(peer.targets()); }},
    };
    return all;
}

const Command& commandFor(const std::string& name, std::size_t argumentCount) {
    for (const Command& command : commands()) {
        if (command.name != name)
            continue;
        const bool takesMore = command.parameters.ends_with("...");
        if (argumentCount < command.parameterCount || (argumentCount > command.parameterCount && !takesMore))
            throw Misuse(name + " takes: " + std::string(command.parameters));
        return command;
    }
    throw Misuse(name.empty() ? "A command is missing." : "Unknown command: " + name);
}

void printUsage(std::string_view program) {
    for (const Command& command : commands())
        std::cerr << "    " << program << ' ' << command.name << ' ' << command.parameters << '\n';
}

extern "C" void giveUp(int /*signal*/) {
    constexpr std::string_view message = "It takes too long.\n";
    if (write(STDERR_FILENO, message.data(), message.size()) < 0)
        _exit(2);
    _exit(3);
}

} // namespace

int runPeer(int argumentCount, char** arguments, const std::function<std::unique_ptr<Peer>()>& make) {
    const std::string program = std::filesystem::path(arguments[0]).filename();
    const Arguments given(arguments + 1, arguments + argumentCount);
    std::signal(SIGALRM, giveUp);
    alarm(limitSeconds);
    try {
        const Arguments parameters(given.empty() ? given.end() : given.begin() + 1, given.end());
        const Command& command = commandFor(given.empty() ? "" : given.front(), parameters.size());
        if (std::getenv("DISPLAY") == nullptr)
            throw std::runtime_error("The variable DISPLAY is not set.");
        const std::unique_ptr<Peer> peer = make();
        const bool done = command.run(*peer, parameters);
        if (!std::cout.flush())
            throw std::runtime_error("Cannot write to standard output.");
        return done ? 0 : 1;
    } catch (const Misuse& misuse) {
        std::cerr << program << ": " << misuse.what() << '\n';
        printUsage(program);
    } catch (const std::exception& error) {
        std::cerr << program << ": " << error.what() << '\n';
    }
    return 2;
}

bool discardInput() {
    char buffer[256];
    const ssize_t count = read(STDIN_FILENO, buffer, sizeof buffer);
    return count > 0 || (count < 0 && errno == EINTR);
}

} // namespace tavel
