#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// An application that copies and pastes through its toolkit's own functions, on the selection CLIPBOARD.
///
/// What copies throws std::runtime_error if the application does not own the clipboard afterwards; what
/// pastes gives nothing if the toolkit finds nothing of that kind.
class Peer {
public:
    virtual ~Peer() = default;

    virtual void copyText(const std::string& text) = 0;
    virtual void copyHtml(const std::string& html, const std::string& text) = 0;
    virtual void copyImage(const std::string& file) = 0;
    virtual void copyFiles(const std::vector<std::string>& paths) = 0; // absolute
    virtual void copyBytes(const std::string& type, const std::string& bytes) = 0;

    /// Gives what was copied to whoever asks, until the end of standard input; also once somebody else owns
    /// the clipboard.
    virtual void serve() = 0;

    virtual std::optional<std::string> pasteText() = 0;
    virtual std::optional<std::string> pasteHtml() = 0;
    virtual bool pasteImage(const std::string& file) = 0; // as PNG; false if there is none
    virtual std::vector<std::string> pasteFiles() = 0;    // paths; URLs of what has no path
    virtual std::optional<std::string> pasteBytes(const std::string& type) = 0;
    virtual std::vector<std::string> targets() = 0;
};

/// The program: does what the command line says with the peer that `make` makes, which is only called when
/// the command line is right. Gives the exit status:
///   0  done
///   1  there is nothing to paste; nothing was printed
///   2  misuse, or something failed; said on standard error
///   3  it took more than 20 s; said on standard error
/// A command that copies prints "ready" when the application owns the clipboard, and then serves, which has
/// no time limit.
int runPeer(int argumentCount, char** arguments, const std::function<std::unique_ptr<Peer>()>& make);

/// Takes in what can be read from standard input, which waits. False at the end of the input.
bool discardInput();

} // namespace tavel
