#pragma once

#include <string>

namespace tavel {

/// Another program that reads the general selection of a display server, as fast or as slowly as the test
/// says. One thread. Waits end with std::runtime_error after a long time-out.
class ReaderPeer {
public:
    virtual ~ReaderPeer() = default;

    /// Asks for a value, whose parts can be taken then. Returns when the owner has answered, if the display
    /// server has answers.
    virtual void ask(const std::string& target) = 0;

    /// Asks, and does not wait for anything.
    virtual void askOnly(const std::string& target) = 0;

    /// Takes the next part of the value, and waits for it. Empty at the value's end.
    virtual std::string takePart() = 0;

    /// Of a value that is far from its end: takes what is there. Whether nothing follows.
    virtual bool isGivenUp() = 0;

    /// Ends the program, as a crash does.
    virtual void disconnect() = 0;

    std::string takeRest() {
        std::string rest;
        for (std::string part = takePart(); !part.empty(); part = takePart())
            rest += part;
        return rest;
    }

    std::string read(const std::string& target) {
        ask(target);
        return takeRest();
    }
};

} // namespace tavel
