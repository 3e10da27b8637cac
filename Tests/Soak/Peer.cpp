// A program on an X server that copies, floods, hangs and dies as its input says, one command a line. It
// answers each with a line:
//
//     copy BYTES    owns CLIPBOARD with a text of that size
//     hang          owns CLIPBOARD and answers no request for its text
//     halve         owns CLIPBOARD and stops in the middle of a text
//     let-go        has no content any more
//     paste         reads the text of CLIPBOARD's owner
//     flood COUNT   requests it so many times without ever reading an answer
//     die           ends without a word to the server or to this program's parent

#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/ScriptedRequestor.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>

namespace tavel {
namespace {

const std::string text = "UTF8_STRING";

class Peer {
public:
    explicit Peer(const std::string& display) : display_(display) {}

    void handle(const std::string& word, std::size_t number) {
        if (word == "copy") {
            own().offerValue(text, std::string(number, 'c'));
            take();
        } else if (word == "hang") {
            own().offer({text});
            owner_->on(text, owner_->silence());
            take();
        } else if (word == "halve") {
            own().offer({text});
            owner_->on(text, [this](const ScriptedOwner::Request& request) {
                owner_->announce(request, 100'000);
                owner_->notify(request);
                if (owner_->awaitDeletion(request))
                    owner_->put(request, text, std::string(50'000, 'h'));
            });
            take();
        } else if (word == "let-go") {
            owner_.reset();
        } else if (word == "paste") {
            static_cast<void>(ScriptedRequestor(display_).read(text));
        } else if (word == "flood") {
            flood(number);
        } else if (word == "die") {
            _exit(0);
        }
    }

private:
    /// A new program on the server, which nobody has asked anything.
    ScriptedOwner& own() { return owner_.emplace(display_); }

    void take() {
        try {
            owner_->take();
        } catch (const std::runtime_error&) {
            owner_.reset(); // another program has taken it at a later time
        }
    }

    void flood(std::size_t count) const {
        ScriptedRequestor requestor(display_);
        for (std::size_t i = 0; i < count; ++i)
            requestor.ask(text, "FLOOD" + std::to_string(i % 100));
        static_cast<void>(requestor.fetchTime()); // the server has them all
    }

    std::string display_;
    std::optional<ScriptedOwner> owner_;
};

} // namespace
} // namespace tavel

int main(int argc, char** argv) {
    if (argc != 2)
        return EXIT_FAILURE;
    // A script may still write to the connection that its owner has just ended.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        tavel::Peer peer(argv[1]);
        std::string line;
        while (std::getline(std::cin, line)) {
            std::istringstream fields(line);
            std::string word;
            std::size_t number = 0;
            fields >> word >> number;
            peer.handle(word, number);
            std::cout << "done" << std::endl; // flushed, because the parent waits for it
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
