#include "Linux/Store/PasteboardStore.h"
#include "Linux/Store/StoreDirectory.h"
#include "Linux/Store/StorePasteboard.h"
#include "Support/Error.h"
#include "Tests/Store/StampedContent.h"
#include "Tests/Support/ReadingLimits.h"

#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <span>
#include <string>
#include <vector>

// Another program that uses a pasteboard, for tests with several processes:
//
//     pasteboard-writer STORE NAME ROLE ARGUMENTS
//
//     write WRITER TIMES SIZE   prints "ready", waits for a line, writes that many contents, prints "done"
//     write-on WRITER SIZE      prints "writing" after the first content, and goes on until it is killed
//     watch CHANGES             prints "ready"; reads without a pause, prints "seen" after that many changes,
//                               and ends with its input; fails when a content is torn, or older than the one
//                               before
//     hold                      reads the payload, prints "holding", waits for a line, and fails unless the
//                               payload it holds is unchanged
//
// After a failure, which it describes on standard error, the exit status is 1.

namespace tavel {

namespace {

using Arguments = std::span<const std::string>;

void print(const char* line) {
    std::cout << line << std::endl; // flushed, as the parent waits for the line
}

void awaitLine() {
    std::string line;
    std::getline(std::cin, line);
}

bool hasInputEnded() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return poll(&input, 1, 0) > 0;
}

int fail(const std::string& message) {
    std::cerr << "pasteboard-writer: " << message << '\n';
    return EXIT_FAILURE;
}

int write(Pasteboard& pasteboard, Arguments arguments) {
    Stamp stamp{std::stoull(arguments[0]), 0, std::stoull(arguments[2])};
    const std::uint64_t times = std::stoull(arguments[1]);
    print("ready");
    awaitLine();
    while (stamp.sequence < times) {
        ++stamp.sequence;
        if (!writeStamped(pasteboard, stamp))
            return fail("a write was refused");
    }
    print("done");
    return EXIT_SUCCESS;
}

int writeOn(Pasteboard& pasteboard, Arguments arguments) {
    Stamp stamp{std::stoull(arguments[0]), 0, std::stoull(arguments[1])};
    for (;;) {
        ++stamp.sequence;
        if (!writeStamped(pasteboard, stamp))
            return fail("a write was refused");
        if (stamp.sequence == 1)
            print("writing");
    }
}

int watch(Pasteboard& pasteboard, Arguments arguments) {
    const int wanted = std::stoi(arguments[0]);
    int changes = 0;
    std::int64_t lastCount = pasteboard.changeCount();
    std::map<std::uint64_t, std::uint64_t> lastSequences; // of each writer
    print("ready");
    while (!hasInputEnded()) {
        const std::int64_t count = pasteboard.changeCount();
        if (count < lastCount)
            return fail("the change count went back");
        const auto [readCount, stamp] = readStamped(pasteboard);
        if (readCount < count)
            return fail("the change count went back");
        if (readCount > 0 && !stamp)
            return fail("the content is not whole");
        if (stamp && stamp->sequence < std::exchange(lastSequences[stamp->writer], stamp->sequence))
            return fail("the content is older than the one before");
        if (readCount > lastCount && ++changes == wanted)
            print("seen");
        lastCount = readCount;
    }
    return EXIT_SUCCESS;
}

int hold(Pasteboard& pasteboard, Arguments) {
    const auto held = pasteboard.data(stampedPayloadType, ample);
    const auto stamp = held ? stampOfPayload(held->view()) : std::nullopt;
    if (!stamp)
        return fail("there is no whole content to hold");
    print("holding");
    awaitLine();
    return stampOfPayload(held->view()) == stamp ? EXIT_SUCCESS : fail("what was read has changed");
}

int run(const std::vector<std::string>& arguments) {
    struct Role {
        int (*run)(Pasteboard&, Arguments);
        std::size_t argumentCount;
    };
    static const std::map<std::string, Role> roles{
        {"write", {write, 3}}, {"write-on", {writeOn, 2}}, {"watch", {watch, 1}}, {"hold", {hold, 0}}};

    const auto role = arguments.size() < 3 ? roles.end() : roles.find(arguments[2]);
    if (role == roles.end() || arguments.size() != 3 + role->second.argumentCount)
        return fail("the arguments make no sense");
    preparePasteboardStoreDirectory(arguments[0]);
    StorePasteboard pasteboard(std::make_shared<const PasteboardStore>(arguments[0]), arguments[1]);
    return role->second.run(pasteboard, Arguments(arguments).subspan(3));
}

} // namespace

} // namespace tavel

int main(int argc, char** argv) {
    try {
        return tavel::run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        return tavel::fail(error.what());
    }
}
